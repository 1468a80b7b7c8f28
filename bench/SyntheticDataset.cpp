#include "SyntheticDataset.hpp"

#include <cstdio>
#include <random>
#include <string>

namespace tavrin::bench {

namespace {

std::string identifier(std::mt19937_64& random, const char* suffix) {
  char text[64];
  std::snprintf(text, sizeof text, "%08llX-%04llX-%04llX-%04llX-%012llX%s",
                static_cast<unsigned long long>(random() & 0xFFFFFFFF),
                static_cast<unsigned long long>(random() & 0xFFFF),
                static_cast<unsigned long long>(random() & 0xFFFF),
                static_cast<unsigned long long>(random() & 0xFFFF),
                static_cast<unsigned long long>(random() & 0xFFFFFFFFFFFF), suffix);
  return text;
}

std::string digest(std::mt19937_64& random) {
  char text[33];
  std::snprintf(text, sizeof text, "%016llx%016llx", static_cast<unsigned long long>(random()),
                static_cast<unsigned long long>(random()));
  return text;
}

void assetRow(std::mt19937_64& random, Row& row) {
  std::uniform_real_distribution<double> latitude(-90, 90), longitude(-180, 180);
  std::uniform_int_distribution<int> coin(0, 2);
  const double created = 1.5e9 + static_cast<double>(random() % 200000000) + 0.25 * (random() % 4);
  row.clear();
  row.append(identifier(random, "/L0/001"));
  row.append(std::int64_t{1 + static_cast<int>(random() % 3)});
  row.append(std::uint64_t{random() % 16});
  row.append(std::uint64_t{1});
  row.append(std::int64_t{4032});
  row.append(std::int64_t{3024});
  row.append(created);
  row.append(created + 12.5);
  if (coin(random) == 0) {
    row.append(nullptr);
    row.append(nullptr);
  } else {
    row.append(latitude(random));
    row.append(longitude(random));
  }
  row.append(static_cast<double>(random() % 600) / 10);
  row.append(coin(random) == 0);
  row.append(false);
}

void labeledRows(std::mt19937_64& random, Row& list, int count) {
  Row entry;
  list.clear();
  for (int i = 0; i < count; ++i) {
    entry.clear();
    entry.append(identifier(random, ""));
    if (random() % 2 == 0) {
      entry.append("_$!<Mobile>!$_");
    } else {
      entry.append(std::int64_t{1 + static_cast<int>(random() % 40)});
    }
    entry.append(true);
    list.append(entry);
  }
}

void contactRow(std::mt19937_64& random, Row& row) {
  Row list, entry;
  row.clear();
  row.append(identifier(random, ":ABPerson"));
  if (random() % 3 == 0) {
    row.append(-1.0e9 + static_cast<double>(random() % 2000000000));
  } else {
    row.append(nullptr);
  }
  row.append(nullptr);
  row.append(std::int64_t{0});
  for (int flag = 0; flag < 10; ++flag) row.append(random() % 4 == 0);
  row.append(false);
  for (int flag = 0; flag < 3; ++flag) row.append(random() % 3 == 0);
  row.append(random() % 5 == 0);
  row.append(nullptr);

  list.clear();
  entry.clear();
  entry.append(identifier(random, ""));
  entry.append(nullptr);
  entry.append(digest(random));
  entry.append(true);
  entry.append(false);
  entry.append(true);
  list.append(entry);
  row.append(list);
  labeledRows(random, list, 3);
  row.append(list);
  labeledRows(random, list, 1);
  row.append(list);
  list.clear();
  entry.clear();
  entry.append(identifier(random, ""));
  entry.append("_$!<Home>!$_");
  for (int flag = 0; flag < 4; ++flag) entry.append(true);
  entry.append("Deutschland");
  entry.append("de");
  entry.append(false);
  entry.append(false);
  list.append(entry);
  row.append(list);
  labeledRows(random, list, 2);
  row.append(list);
  labeledRows(random, list, 1);
  row.append(list);
  list.clear();
  entry.clear();
  entry.append(identifier(random, ""));
  entry.append(digest(random));
  entry.append(digest(random));
  entry.append(true);
  list.append(entry);
  row.append(list);
}

}  // namespace

DatasetDocument makeSyntheticDataset(int assetRows, int contactRows) {
  std::mt19937_64 random(2026);
  DatasetDocument document;
  Element header("GeneralInfo");
  header.append(8);
  header.append(1);
  header.append(1605555555.123456);
  header.append(1605555561.5);
  header.append("iPhone");
  header.append("iPhone12,1");
  header.append("14.2");
  header.append(identifier(random, ""));
  header.append(nullptr);
  document.push_back(std::move(header));

  Row row;
  Element contacts("Contacts");
  for (int i = 0; i < contactRows; ++i) {
    contactRow(random, row);
    contacts.append(row);
  }
  document.push_back(std::move(contacts));
  Element images("Images");
  for (int i = 0; i < assetRows; ++i) {
    assetRow(random, row);
    images.append(row);
  }
  document.push_back(std::move(images));
  for (auto& section : document) section.shrinkToFit();
  return document;
}

std::size_t datasetMemoryBytes(const DatasetDocument& document) {
  std::size_t bytes = document.capacity() * sizeof(Element);
  for (const Element& section : document) {
    bytes += section.ChildElements().capacityBytes() + section.Name().capacity();
  }
  return bytes;
}

}  // namespace tavrin::bench
