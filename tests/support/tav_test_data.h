// tav_test_data.h - tables of test cases kept as text under tests/data.
//
// A table file has one case a line, its fields separated by '|' with the blanks around each
// field dropped. Lines that are empty or start with '#' are comments. A field "<null>" stands
// for a null pointer; an empty field is the empty text; a field in double quotes is the text
// between them, blanks at either end included. Backslashes are plain characters, so
// Windows paths read as they are written.

#ifndef TAV_TEST_DATA_H
#define TAV_TEST_DATA_H

#include <cstdint>
#include <string>
#include <vector>

namespace tav::test {

struct DataRow {
  std::string where;  // "file:line", for SCOPED_TRACE
  std::vector<std::string> fields;
  std::vector<bool> isNull;

  // The text of a field, or null for "<null>".
  const char* text(size_t field) const { return isNull[field] ? nullptr : fields[field].c_str(); }
  const std::string& str(size_t field) const { return fields[field]; }
  // "yes" or "no".
  bool flag(size_t field) const;
  // A decimal number, or hexadecimal with "0x"; a leading '-' negates.
  int64_t number(size_t field) const;
};

// Reads tests/data/<name>; every row must have fieldCount fields. A file that is missing or
// malformed fails the calling test and gives no rows.
std::vector<DataRow> readDataTable(const std::string& name, size_t fieldCount);

}  // namespace tav::test

#endif  // TAV_TEST_DATA_H
