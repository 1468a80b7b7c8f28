#include "DatasetSchema.hpp"

namespace tavrin::sandbox {

namespace {

// Short names keep the tables below readable one position per entry.
constexpr Slot text{Kind::text};
constexpr Slot textOrNull{Kind::text, true};
constexpr Slot boolean{Kind::boolean};
constexpr Slot booleanOrNull{Kind::boolean, true};
constexpr Slot integer{Kind::integer};
constexpr Slot integerOrNull{Kind::integer, true};
constexpr Slot unsignedInteger{Kind::unsignedInteger};
constexpr Slot unsignedOrNull{Kind::unsignedInteger, true};
constexpr Slot number{Kind::number};
constexpr Slot numberOrNull{Kind::number, true};
constexpr Slot labelCode{Kind::labelCode};
constexpr Slot digest{Kind::digest};
constexpr Slot digestOrNull{Kind::digest, true};
constexpr Slot flag{Kind::flag};
constexpr Slot listOf(const RowShape& shape) { return {Kind::rows, true, &shape}; }

// clang-format off
// "GeneralInfo": version, platform, start, end, brand, model, system, device id, SDK id.
constexpr Slot headerSlots[] = {integer, integer, number,     number,    text,
                                text,    text,    textOrNull, textOrNull};

// Contacts and the four kinds of rows nested in a contact row.
constexpr Slot labeledValueSlots[] = {text, labelCode, boolean};
constexpr Slot postalAddressSlots[] = {text,    labelCode, boolean, boolean,       boolean,
                                       boolean, text,      text,    booleanOrNull, booleanOrNull};
constexpr Slot socialProfileSlots[] = {text, digestOrNull, digest, boolean, boolean, boolean};
constexpr Slot instantMessageSlots[] = {text, digestOrNull, digest, boolean};
constexpr RowShape labeledValueRow{labeledValueSlots};
constexpr RowShape postalAddressRow{postalAddressSlots};
constexpr RowShape socialProfileRow{socialProfileSlots};
constexpr RowShape instantMessageRow{instantMessageSlots};
constexpr Slot contactSlots[] = {
    text,          numberOrNull,  numberOrNull,  integer,       boolean,        // 1-5
    boolean,       boolean,       boolean,       boolean,       boolean,        // 6-10
    boolean,       boolean,       boolean,       boolean,       booleanOrNull,  // 11-15
    boolean,       boolean,       boolean,       boolean,       booleanOrNull,  // 16-20
    listOf(socialProfileRow),     listOf(labeledValueRow),                      // 21-22
    listOf(labeledValueRow),      listOf(postalAddressRow),                     // 23-24
    listOf(labeledValueRow),      listOf(labeledValueRow),                      // 25-26
    listOf(instantMessageRow),                                                  // 27
};

constexpr Slot groupSlots[] = {text, boolean};

constexpr Slot albumSlots[] = {text,         integer,      integer,      integer, numberOrNull,
                               numberOrNull, numberOrNull, numberOrNull, integer};
constexpr Slot assetSlots[] = {
    text,         integer,      unsignedInteger, unsignedInteger, integer, integer, numberOrNull,
    numberOrNull, numberOrNull, numberOrNull,    number,          boolean, boolean};

constexpr Slot calendarSlots[] = {text,          integerOrNull, boolean, integer,        textOrNull,
                                  integerOrNull, boolean,       boolean, unsignedInteger};
constexpr Slot eventSlots[] = {
    textOrNull,    text,          integer,       numberOrNull,  numberOrNull,  // 1-5
    boolean,       numberOrNull,  boolean,       booleanOrNull, boolean,       // 6-10
    integerOrNull, integerOrNull, integerOrNull, integer,       boolean,       // 11-15
    boolean,       boolean,       boolean,       boolean,       numberOrNull,  // 16-20
    numberOrNull,  textOrNull,    integerOrNull,                               // 21-23
};
constexpr Slot reminderSlots[] = {
    text,    numberOrNull, numberOrNull, boolean,    numberOrNull,   // 1-5
    integer, boolean,      boolean,      boolean,    boolean,        // 6-10
    boolean, numberOrNull, numberOrNull, textOrNull, integerOrNull,  // 11-15
};

constexpr Slot captureDeviceSlots[] = {
    textOrNull,    text,           boolean,        booleanOrNull,  integerOrNull,  // 1-5
    number,        integer,        boolean,        boolean,        boolean,        // 6-10
    booleanOrNull, boolean,        boolean,        boolean,        boolean,        // 11-15
    boolean,       number,         numberOrNull,   numberOrNull,   boolean,        // 16-20
    boolean,       boolean,        boolean,        boolean,        boolean,        // 21-25
    boolean,       boolean,        boolean,        boolean,        boolean,        // 26-30
    boolean,       boolean,        boolean,        boolean,        integer,        // 31-35
    number,        booleanOrNull,  booleanOrNull,  booleanOrNull,  booleanOrNull,  // 36-40
    integerOrNull, booleanOrNull,  booleanOrNull,  integerOrNull,  integerOrNull,  // 41-45
    integerOrNull, unsignedOrNull, unsignedOrNull, unsignedOrNull,                 // 46-49
};

constexpr Slot geoSlots[] = {boolean, boolean, boolean, boolean};

constexpr Slot generalDataSlots[] = {
    text,          text,          text,          text,            text,        // 1-5
    textOrNull,    boolean,       boolean,       boolean,         boolean,     // 6-10
    boolean,       integerOrNull, integerOrNull, unsignedInteger, textOrNull,  // 11-15
    textOrNull,    textOrNull,    textOrNull,    text,            textOrNull,  // 16-20
    textOrNull,    textOrNull,    boolean,       text,            textOrNull,  // 21-25
    booleanOrNull, textOrNull,    textOrNull,    textOrNull,      textOrNull,  // 26-30
    textOrNull,                                                                // 31
};

constexpr Slot permissionSlots[] = {text, flag};
constexpr std::string_view permissionKeys[] = {
    "NSCalendarsUsageDescription", "NSRemindersUsageDescription", "NSContactsUsageDescription",
    "NSPhotoLibraryUsageDescription"};

// clang-format on

constexpr RowShape headerRow{headerSlots};
constexpr RowShape contactRow{contactSlots};
constexpr RowShape groupRow{groupSlots};
constexpr RowShape albumRow{albumSlots};
constexpr RowShape assetRow{assetSlots};
constexpr RowShape calendarRow{calendarSlots};
constexpr RowShape eventRow{eventSlots};
constexpr RowShape reminderRow{reminderSlots};
constexpr RowShape captureDeviceRow{captureDeviceSlots};
constexpr RowShape geoValues{geoSlots};
constexpr RowShape generalDataValues{generalDataSlots};
constexpr RowShape permissionRow{permissionSlots};

// The reminder fetch may deliver no list, and the capture-device list may be
// missing altogether; a source may record either as its one error entry.
constexpr SectionShape sections[] = {
    {"GeneralInfo", true, &headerRow, {}, Failure::none, {}},
    {"Contacts", false, &contactRow, "Contacts", Failure::afterRows, {}},
    {"ContactGroups", false, &groupRow, "ContactGroups", Failure::alone, {}},
    {"MediaAlbums", false, &albumRow, "MediaAlbums", Failure::none, {}},
    {"Video", false, &assetRow, "Video", Failure::none, {}},
    {"Images", false, &assetRow, "Images", Failure::none, {}},
    {"UnknownFiles", false, &assetRow, "UnknownFiles", Failure::none, {}},
    {"Calendars", false, &calendarRow, "CalendarsEvent", Failure::none, {}},
    {"CalendarEvents", false, &eventRow, "CalendarEvents", Failure::alone, {}},
    {"CalendarReminders", false, &reminderRow, "CalendarReminders", Failure::alone, {}},
    {"CaptureDevice", false, &captureDeviceRow, {}, Failure::alone, {}},
    {"GeoInfo", true, &geoValues, {}, Failure::none, {}},
    {"GeneralData", true, &generalDataValues, {}, Failure::none, {}},
    {"Permissions", false, &permissionRow, {}, Failure::none, permissionKeys},
};

static_assert(std::size(headerSlots) == 9);
static_assert(std::size(contactSlots) == 27);
static_assert(std::size(postalAddressSlots) == 10);
static_assert(std::size(socialProfileSlots) == 6);
static_assert(std::size(albumSlots) == 9);
static_assert(std::size(assetSlots) == 13);
static_assert(std::size(calendarSlots) == 9);
static_assert(std::size(eventSlots) == 23);
static_assert(std::size(reminderSlots) == 15);
static_assert(std::size(captureDeviceSlots) == 49);
static_assert(std::size(generalDataSlots) == 31);
static_assert(std::size(sections) == 14);

}  // namespace

std::span<const SectionShape> datasetSections() { return sections; }

}  // namespace tavrin::sandbox
