#pragma once

#include <string_view>

// The texts a generated phone is filled from: names and places in many
// scripts, the labels a phone writes itself and ones people type, so that a
// generated address book meets the same Unicode, label and whitespace cases as
// a real one.
namespace tavrin::tool::samples {

using Text = std::string_view;

inline constexpr Text givenNames[] = {
    "Anna",   "Lukas",  "Zoë",    "José",  "Björn", "Łukasz", "Ørjan",      "Søren",
    "Chloé",  "Maëlle", "Иван",   "Мария", "Алёна", "王伟",   "李娜",       "陽翔",
    "さくら", "蓮",     "민준",   "서연",  "محمد",  "فاطمة",  "Αλέξανδρος", "Ελένη",
    "דוד",    "נועה",   "Nguyễn", "Thảo",  "Aarav", "प्रिया",  "Oliver",     "Emma",
    "Liam",   "Olivia", "Noah",   "Mia",   "Ömer",  "Ayşe",   "Şebnem",     "Mom"};
inline constexpr Text familyNames[] = {
    "Becker", "Müller",  "Schäfer", "García",   "Fernández",    "Nowak",  "Wiśniewska",
    "Dubois", "Lefèvre", "Иванов",  "Смирнова", "王",           "李",     "佐藤",
    "鈴木",   "김",      "박",      "الحسيني",  "Παπαδόπουλος", "כהן",    "Trần",
    "Sharma", "Smith",   "Johnson", "O'Brien",  "van der Berg", "Yılmaz", "Øster"};
inline constexpr Text middleNames[] = {"Maria", "J.", "Александрович", "Louise", "Karl"};
inline constexpr Text nicknames[] = {"Anni", "Bobby", "Sasha", "Mäuschen", "小王", "Doc", "🙂"};
inline constexpr Text namePrefixes[] = {"Dr.", "Prof.", "Mme", "Herr", "Sr."};
inline constexpr Text nameSuffixes[] = {"Jr.", "III", "PhD", "MD"};
inline constexpr Text phoneticGivenNames[] = {"さくら", "レン", "ヒナタ", "Wáng Wěi"};
inline constexpr Text phoneticFamilyNames[] = {"サトウ", "スズキ", "Lǐ"};
inline constexpr Text organizations[] = {
    "Becker & Partner", "Café Müller",         "株式会社ソニー", "ООО «Ромашка»",
    "Acme Corp",        "Boulangerie Lefèvre", "Charité",        "Universidad de Sevilla",
    "삼성전자",         "Stadtwerke Köln"};
inline constexpr Text departments[] = {"Design", "Einkauf", "R&D", "Отдел продаж", "営業部"};
inline constexpr Text jobTitles[] = {
    "Architect", "Ärztin", "Software Engineer", "Плотник", "課長", "Head of \"Fun\"", "Teacher"};
inline constexpr Text notes[] = {"Met at the Bauhaus tour\n", "Allergic to nuts",
                                 "🎂 party every June",        "Code: 4711\nGate B",
                                 "Предпочитает чай",          "C:\\Users\\share"};

// Labels the phone writes itself; they travel as their text.
inline constexpr Text phoneLabels[] = {"_$!<Mobile>!$_", "_$!<Home>!$_",    "_$!<Work>!$_",
                                       "_$!<Main>!$_",   "_$!<HomeFAX>!$_", "_$!<Other>!$_"};
inline constexpr Text addressLabels[] = {"_$!<Home>!$_", "_$!<Work>!$_", "_$!<Other>!$_"};
inline constexpr Text urlLabels[] = {"_$!<HomePage>!$_", "_$!<Home>!$_", "_$!<Work>!$_"};
inline constexpr Text relationLabels[] = {"_$!<Mother>!$_",  "_$!<Father>!$_", "_$!<Spouse>!$_",
                                          "_$!<Child>!$_",   "_$!<Friend>!$_", "_$!<Sister>!$_",
                                          "_$!<Partner>!$_", "_$!<Manager>!$_"};
// Labels people type, and the phone's "iPhone" label, which has no markers.
inline constexpr Text customLabels[] = {"iPhone",     "Gym",  "Büro",      "Дача",   "Zweithandy",
                                        "Old number", "学校", "Emergency", "Signal", "Ferienhaus"};

inline constexpr Text streets[] = {"Hauptstraße 12",   "1 Infinite Loop",
                                   "Rue de Rivoli 99", "ул. Тверская, д. 7",
                                   "銀座4-6-16",       "Calle Mayor 5\nPiso 2"};
inline constexpr Text cities[] = {"Berlin", "Cupertino", "Paris", "Москва", "東京", "Sevilla"};
inline constexpr Text states[] = {"BE", "CA", "Île-de-France", "東京都"};
inline constexpr Text subLocalities[] = {"Mitte", "Kreuzberg", "Le Marais", "銀座"};
inline constexpr Text subAdministrativeAreas[] = {"Santa Clara", "Landkreis München"};
// Countries as people enter them, with their ISO codes (either case, or none).
inline constexpr Text countries[][2] = {
    {"Deutschland", "de"}, {"Germany", "DE"}, {"United States", "us"}, {"France", "fr"},
    {"日本", "jp"},        {"Россия", "ru"},  {"España", "es"},        {"", ""},
    {"Brasil", "br"},      {"USA", ""}};
inline constexpr Text mailDomains[] = {"example.com", "example.de", "example.org", "mail.example"};
inline constexpr Text socialServices[] = {"Twitter",    "Facebook",   "LinkedIn", "Flickr",
                                          "Sina Weibo", "GameCenter", "Mastodon", ""};
inline constexpr Text messageServices[] = {"Skype", "Jabber", "QQ", "Facebook", "ICQ", "Signal"};
inline constexpr Text groupNames[] = {"Family",       "Familie", "Work",       "Fußball",
                                      "Книжный клуб", "大学",    "Neighbours", "Kita"};

inline constexpr Text sourceTitles[] = {
    "iCloud",  "anna.becker@icloud.com", "Exchange", "Google", "Other",
    "Default", "Subscribed Calendars"};
inline constexpr Text eventLocations[] = {
    "Alexanderplatz 1, 10178 Berlin",   "Zoom", "会議室 3", "Café Central", "Home",
    "https://meet.example/abc-defg-hij"};
inline constexpr Text organizerNames[] = {"Anna Becker", "Иван Иванов", "佐藤 さくら",
                                          "Team Calendar", "noreply@example.com"};
inline constexpr Text placeNames[] = {
    "Berlin", "Mitte", "Paris", "東京", "Санкт-Петербург", "Lisboa", "Yosemite National Park"};

// Texts with no content, which must read as empty, and a line break, which
// must not.
inline constexpr Text blanks[] = {" ", "   ", "\t", "\u3000", "\u00A0\u2003"};
inline constexpr Text lineBreak = "\n";

}  // namespace tavrin::tool::samples
