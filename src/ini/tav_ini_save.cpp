// tav_ini_save.cpp - writing the configuration model back to a file.
//
// save() writes through a standard stream in the plain format, exactly as files have always
// been written. saveAtomic() builds the whole file in memory in the exact format first, then
// writes it to a new temporary file beside the target, waits until it is on the disk and
// renames it over the target, so that the target is at every moment either the old file or the
// complete new one.

#include <sstream>
#include <string>

#include "../fs/tav_file_io_os.h"
#include "../fs/tav_fs_os.h"
#include "tav_error.h"
#include "tav_ini.h"
#include "tav_ini_writer.h"

namespace {

// A name another process took between choosing it and creating the file is tried again.
constexpr int kTemporaryNameAttempts = 8;
constexpr const char* kTemporaryPrefix = "~INI";

// Creates a new temporary file in the directory of target; false when none could be made.
bool createTemporary(const char* target, tav::os::FileOpening opening, TavClFilename* temporary,
                     int* handle) {
  for (int attempt = 0; attempt < kTemporaryNameAttempts; ++attempt) {
    try {
      *temporary = TavClTmpFilename(TavClFilename(target), kTemporaryPrefix);
    } catch (const TavClException&) {
      return false;  // the directory leaves no room for a temporary name
    }
    const tav::os::OsStatus status =
        tav::os::openFile(temporary->getAsCString(), opening, handle);
    if (status.ok()) return true;
    if (!status.is(tav::os::OsFailure::alreadyExists)) return false;
  }
  return false;
}

// Writes all of text into the open handle, waits for the disk and closes the handle (also
// after a failure).
bool writeAndClose(int handle, const std::string& text) {
  uint64_t written = 0;
  bool ok = tav::os::writeFile(handle, reinterpret_cast<const uint8_t*>(text.data()), text.size(),
                               &written)
                .ok();
  ok = ok && tav::os::flushFileToDisk(handle).ok();
  const bool closed = tav::os::closeFile(handle).ok();
  return ok && closed;
}

bool streamIsGood(const std::ofstream& out) { return !out.fail() && !out.bad() && !out.eof(); }

}  // namespace

TavClIniFileSave::TavClIniFileSave(const TavClFilenameABase& name) : TavClIniFile(name) {}

TavClIniFileSave::~TavClIniFileSave() {
  if (stream.is_open()) stream.close();
}

void TavClIniFileSave::openOwnStream() {
  if (streamReady) return;
  // Opening for reading and writing with truncation creates a missing file and empties an
  // existing one; a failed open leaves the stream failed, so every later write is skipped.
  stream.open(getName(), std::ios::in | std::ios::out | std::ios::trunc);
  streamReady = true;
}

bool TavClIniFileSave::save() {
  openOwnStream();
  return save(stream);
}

bool TavClIniFileSave::save(std::ofstream& out) {
  streamReady = true;
  TavClIniFileSectionCursor sections(*this);
  for (sections.setToFirst(); sections.isValid(); sections.setToNext()) {
    if (sections.getSection()[0] == '\0') continue;  // deleted
    saveSection(out, sections.getSection(), nullptr);
    TavClIniFileOptionCursor options(sections);
    for (options.setToFirst(); options.isValid(); options.setToNext()) {
      if (options.getOption()[0] == '\0') continue;  // deleted
      saveOption(out, options.getOption(), options.getValue(), options.getComment());
    }
  }
  out.flush();
  return streamIsGood(out);
}

bool TavClIniFileSave::saveAtomic() {
  std::ostringstream text;
  TavClIniFileSectionCursor sections(*this);
  for (sections.setToFirst(); sections.isValid(); sections.setToNext()) {
    if (sections.getSection()[0] == '\0') continue;
    if (!tav::ini::writeExactSection(text, sections.getSection())) return false;
    TavClIniFileOptionCursor options(sections);
    for (options.setToFirst(); options.isValid(); options.setToNext()) {
      if (options.getOption()[0] == '\0') continue;
      if (!tav::ini::writeExactOption(text, options.getOption(), options.getValue(),
                                      options.getComment())) {
        return false;
      }
    }
  }

  // A read-only file is not replaced (the rename would do it on POSIX). A file that exists gives
  // its permissions to the new one; until then the new one is its owner's alone, since it may
  // hold what the old one kept private. A new file gets the permissions new files get.
  const bool replacing = tav::os::pathExists(getName());
  if (replacing && tav::os::isReadOnly(getName())) return false;
  TavClFilename temporary;
  int handle = -1;
  const tav::os::FileOpening opening =
      replacing ? tav::os::FileOpening::createNew : tav::os::FileOpening::createNewDefault;
  if (!createTemporary(getName(), opening, &temporary, &handle)) return false;
  if (!writeAndClose(handle, text.str()) ||
      (replacing && !tav::os::copyPermissions(getName(), temporary.getAsCString()).ok()) ||
      !tav::os::replaceFile(temporary.getAsCString(), getName()).ok()) {
    tav::os::removeFile(temporary.getAsCString());
    return false;
  }
  return true;
}

bool TavClIniFileSave::saveSection(std::ofstream& out, const char* name, const char* comment) {
  openOwnStream();
  tav::ini::writeSectionHeader(out, name);
  saveComment(out, comment);
  return streamIsGood(out);
}

bool TavClIniFileSave::saveOption(std::ofstream& out, const char* name, const char* value,
                                  const char* comment) {
  openOwnStream();
  tav::ini::writePlainOption(out, name, value, comment);
  return streamIsGood(out);
}

bool TavClIniFileSave::saveOption(std::ofstream& out, const char* name, char value,
                                  const char* comment) {
  openOwnStream();
  saveOption(out, name);
  out << '\'';
  saveChar(out, value);
  out << '\'';
  saveComment(out, comment);
  return streamIsGood(out);
}

namespace {

template <typename Number>
void writeDecimal(std::ofstream& out, Number value) {
  out << std::dec << value;
}

}  // namespace

// The narrower integers are written as their wider kin: the decimal text is the same.
bool TavClIniFileSave::saveOption(std::ofstream& out, const char* name, int value,
                                  const char* comment) {
  return saveOption(out, name, static_cast<long>(value), comment);
}

bool TavClIniFileSave::saveOption(std::ofstream& out, const char* name, unsigned int value,
                                  const char* comment) {
  return saveOption(out, name, static_cast<unsigned long>(value), comment);
}

bool TavClIniFileSave::saveOption(std::ofstream& out, const char* name, long value,
                                  const char* comment) {
  openOwnStream();
  saveOption(out, name);
  writeDecimal(out, value);
  saveComment(out, comment);
  return streamIsGood(out);
}

bool TavClIniFileSave::saveOption(std::ofstream& out, const char* name, unsigned long value,
                                  const char* comment) {
  openOwnStream();
  saveOption(out, name);
  writeDecimal(out, value);
  saveComment(out, comment);
  return streamIsGood(out);
}

bool TavClIniFileSave::saveOptionBool(std::ofstream& out, const char* name, bool value,
                                      const char* comment) {
  openOwnStream();
  saveOption(out, name);
  out << (value ? getStringTrue() : getStringFalse());
  saveComment(out, comment);
  return streamIsGood(out);
}

void TavClIniFileSave::saveOption(std::ofstream& out, const char* name) { out << name << "= "; }

void TavClIniFileSave::saveChar(std::ofstream& out, char c) const {
  tav::ini::writeEscapedChar(out, c);
}

void TavClIniFileSave::saveComment(std::ofstream& out, const char* comment) const {
  tav::ini::writeCommentPart(out, comment);
}
