// tav_codeset_names.cpp - the CCSIDs of the codeset names that C libraries report for locales.
//
// Names are compared in a folded form: upper case without '-' and '_', since the same codeset
// is spelt "UTF-8", "utf8" or "ISO_8859-1" by different systems.

#include "tav_codeset_names.h"

#include <string>

namespace tav::codepage {

namespace {

struct CodesetRow {
  const char* foldedName;
  uint32_t ccsid;
};

const CodesetRow kCodesets[] = {
    {"UTF8", 1208},    {"ANSIX3.41968", 367}, {"ASCII", 367},    {"USASCII", 367},
    {"ISO88591", 819}, {"ISO88592", 912},     {"ISO88595", 915}, {"ISO88596", 1089},
    {"ISO88597", 813}, {"ISO88598", 916},     {"ISO88599", 920}, {"ISO885915", 923},
    {"CP1250", 1250},  {"CP1251", 1251},      {"CP1252", 1252},  {"CP1253", 1253},
    {"CP1254", 1254},  {"CP1255", 1255},      {"CP1256", 1256},  {"CP1257", 1257},
    {"CP1258", 1258},  {"CP437", 437},        {"CP850", 850},    {"CP852", 852},
    {"CP866", 866},    {"KOI8R", 878},        {"TIS620", 874},   {"EUCJP", 954},
    {"SHIFTJIS", 943}, {"SJIS", 943},         {"EUCKR", 970},    {"EUCTW", 964},
    {"BIG5", 950},     {"GBK", 1386},         {"GB2312", 1383},  {"GB18030", 1392},
};

std::string fold(const char* name) {
  std::string folded;
  for (const char* p = name; *p != '\0'; ++p) {
    char c = *p;
    if (c == '-' || c == '_') continue;
    folded.push_back((c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c);
  }
  return folded;
}

}  // namespace

uint32_t ccsidForCodesetName(const char* name) {
  if (name == nullptr) return 0;
  std::string folded = fold(name);
  for (const CodesetRow& row : kCodesets) {
    if (folded == row.foldedName) return row.ccsid;
  }
  return 0;
}

}  // namespace tav::codepage
