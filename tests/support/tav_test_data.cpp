// tav_test_data.cpp - the reader of tests/data tables behind tav_test_data.h.

#include "tav_test_data.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace tav::test {
namespace {

std::string trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

}  // namespace

bool DataRow::flag(size_t field) const {
  EXPECT_TRUE(fields[field] == "yes" || fields[field] == "no") << where << ": " << fields[field];
  return fields[field] == "yes";
}

int64_t DataRow::number(size_t field) const {
  const std::string& text = fields[field];
  const bool negative = !text.empty() && text[0] == '-';
  char* end = nullptr;
  const auto magnitude = std::strtoull(text.c_str() + (negative ? 1 : 0), &end, 0);
  EXPECT_TRUE(!text.empty() && *end == '\0') << where << ": not a number: " << text;
  return negative ? -static_cast<int64_t>(magnitude) : static_cast<int64_t>(magnitude);
}

std::vector<DataRow> readDataTable(const std::string& name, size_t fieldCount) {
  std::vector<DataRow> rows;
  std::ifstream in(std::string(TAV_TEST_DATA_DIR) + "/" + name);
  if (!in) ADD_FAILURE() << "cannot read " << TAV_TEST_DATA_DIR << "/" << name;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (trimmed(line).empty() || trimmed(line)[0] == '#') continue;
    DataRow row{name + ":" + std::to_string(number), {}, {}};
    for (size_t start = 0, bar = 0; bar != std::string::npos; start = bar + 1) {
      bar = line.find('|', start);
      std::string field = trimmed(line.substr(start, bar - start));
      if (field.size() >= 2 && field.front() == '"' && field.back() == '"') {
        field = field.substr(1, field.size() - 2);
      }
      row.fields.push_back(field);
      row.isNull.push_back(row.fields.back() == "<null>");
    }
    if (row.fields.size() != fieldCount) {
      ADD_FAILURE() << row.where << ": " << row.fields.size() << " fields, not " << fieldCount;
      return {};
    }
    rows.push_back(row);
  }
  if (rows.empty()) ADD_FAILURE() << name << " holds no rows";
  return rows;
}

}  // namespace tav::test
