// tav_ini.h - sectioned configuration files: the in-memory model, its parser, cursors and writer.
//
// TavClIniFile reads a line-oriented configuration file of "[section]" headers and
// "name = value ; comment" lines into a list of sections, each with a list of options, answers
// typed look-ups and lets the caller add, change and delete entries. Deleted entries keep their
// records with an empty name, so cursors standing on them stay usable. TavClIniFileSave derives
// from the model and writes it back.
//
// Every option keeps its name, value and comment one behind the other in a store of at most
// kTextSize characters; longer texts are cut to fit, never written past it. The store is
// allocated to the size its texts need rather than in full, so a model takes memory in
// proportion to its file. An input line longer than kMaxLineLength characters is reported as
// INIFILE_LINE_TOO_LONG with its line number and skipped; the lines after it are read as usual.

#ifndef TAV_INI_H
#define TAV_INI_H

#include <stddef.h>

#include <fstream>
#include <iosfwd>

#include "tav_cursor.h"
#include "tav_error.h"
#include "tav_export.h"
#include "tav_file.h"
#include "tav_filename.h"
#include "tav_memmgr.h"

class TavClIniFileOption;
class TavClIniFileSection;
class TavClIniFileSectionCursor;
class TavClIniFileOptionCursor;
class TavClIniFileSectionIndex;

// Decodes the escape whose first character `p` points at (the character after the backslash)
// and moves `p` behind it. Reads no further than the NUL that ends the text.
TAV_API char tavIniFileGetEscCharacter(const char*& p);
// Decodes the character literal whose opening apostrophe `p` points at and moves `p` behind the
// closing apostrophe. Reads no further than the NUL that ends the text.
TAV_API char tavIniFileGetQuotedCharacter(const char*& p);

// One option: name, value and comment one behind the other in a single store.
class TAV_API TavClIniFileOption : public TavClMemoryManagedObject {
 public:
  // The store's full size: the limits every text is cut to.
  static constexpr size_t kTextSize = 1032;
  // The longest value (and the longest name) a store holds.
  static constexpr size_t kMaxValueLength = 1024;

  // Parses an option line "name = value ; comment" (the line must hold an '=').
  explicit TavClIniFileOption(const char* line);
  // Stores name and value verbatim, cut to fit, with an empty comment.
  TavClIniFileOption(const char* name, const char* value);
  TavClIniFileOption(const TavClIniFileOption&) = delete;
  TavClIniFileOption& operator=(const TavClIniFileOption&) = delete;
  // Frees the options behind this one as well.
  ~TavClIniFileOption();

  const char* getName() const { return text; }
  const char* getValue() const { return value; }
  const char* getComment() const { return comment; }
  TavClIniFileOption* getNext() const { return next; }
  bool isDeleted() const { return text[0] == '\0'; }

  void appendOption(TavClIniFileOption* option) { next = option; }
  // Processes a continuation line and appends its value behind the current one.
  void appendOptionValue(const char* line);
  // Copies `newValue` verbatim over the value, cut at the end of the store; the comment pointer
  // stays where it is.
  void setNewValue(const char* newValue);
  // Empties name, value and comment.
  void markDeleted();

 private:
  friend class TavClIniFile;
  // Applies the value rules to `source` and writes value and comment from `destination` on,
  // never beyond the end of the store.
  void processValue(const char* source, char* destination);
  // Moves the texts from a full-size working image into a store of the size they use.
  void keepFrom(char* image);
  // Runs a change on a full-size working image of the store, then keeps the result.
  template <typename Change>
  void change(Change&& apply);

  TavClIniFileOption* next = nullptr;
  char* text = nullptr;
  char* value = nullptr;
  char* comment = nullptr;
};

// One section: a name of at most kMaxNameLength characters and its options.
class TAV_API TavClIniFileSection : public TavClMemoryManagedObject {
 public:
  static constexpr size_t kMaxNameLength = 80;

  TavClIniFileSection(const char* begin, const char* end);
  explicit TavClIniFileSection(const char* name);
  TavClIniFileSection(const TavClIniFileSection&) = delete;
  TavClIniFileSection& operator=(const TavClIniFileSection&) = delete;
  // Frees its options and the sections behind it (iteratively: long lists are fine).
  ~TavClIniFileSection();

  const char* getName() const { return name; }
  TavClIniFileSection* getNext() const { return next; }
  TavClIniFileOption* getFirstOption() const { return firstOption; }
  bool isDeleted() const { return name[0] == '\0'; }

  void appendSection(TavClIniFileSection* section) { next = section; }
  void setFirstOption(TavClIniFileOption* option);
  // Appends behind the last option in constant time.
  void appendOption(TavClIniFileOption* option);
  // Frees the options and empties the name.
  void deleteContents();

 private:
  TavClIniFileSection* next = nullptr;
  TavClIniFileOption* firstOption = nullptr;
  TavClIniFileOption* lastOption = nullptr;
  char name[kMaxNameLength + 1];
};

// The model of one configuration file.
class TAV_API TavClIniFile : public TavClFile {
 public:
  typedef bool (*ErrorHandler)(const _TavStError& error, unsigned int lineNumber, void* userData);
  // The longest input line; longer ones are reported and skipped.
  static constexpr size_t kMaxLineLength = 1023;

  explicit TavClIniFile(const TavClFilenameABase& name);
  TavClIniFile(const TavClIniFile&) = delete;
  TavClIniFile& operator=(const TavClIniFile&) = delete;
  ~TavClIniFile() override;

  // Reads the file (line feed ends a line, a carriage return before it is dropped on every
  // platform, duplicate headers make new sections). False when the file cannot be opened or the
  // error handler stopped the parse.
  bool load(bool allowContinuation);
  // Parses `length` bytes of memory. The line counter goes on from the previous load.
  bool loadFromBuffer(const char* buffer, size_t length, char delimiter,
                      bool appendDuplicateSections, bool allowContinuation);
  // A null handler ignores every parse error.
  void setErrorHandler(ErrorHandler handler, void* userData);

  // Makes the first section of that name (ignoring case) current; none when absent.
  bool getSection(const char* name) const;
  // Look-ups in the current section; the out arguments stay untouched when not found.
  bool getOption(const char* name, const char*& value) const;
  bool getOption(const char* name, const char*& value, const char*& comment) const;
  bool getOption(const char* name, int& value) const;
  bool getOption(const char* name, int& value, const char*& comment) const;
  bool getOption(const char* name, long& value) const;
  bool getOption(const char* name, long& value, const char*& comment) const;
  bool getOption(const char* name, unsigned int& value) const;
  bool getOption(const char* name, unsigned int& value, const char*& comment) const;
  bool getOption(const char* name, unsigned long& value) const;
  bool getOption(const char* name, unsigned long& value, const char*& comment) const;
  bool getOption(const char* name, char& value) const;
  bool getOption(const char* name, char& value, const char*& comment) const;
  bool getOptionBool(const char* name, bool& value) const;
  bool getOptionBool(const char* name, bool& value, const char*& comment) const;

  const char* getStringAllTrueTokens() const { return "|ON|TRUE|YES|1|OK|"; }
  const char* getStringTrue() const { return "ON"; }
  const char* getStringFalse() const { return "OFF"; }

  // Appends a new section (duplicates allowed) and makes it current.
  bool addSection(const char* name);
  bool addOption(const char* section, const char* option, const char* value);
  bool addOption(const TavClIniFileSectionCursor& section, const char* option, const char* value);
  bool setNewValue(const char* section, const char* option, const char* value);
  bool setNewValue(const TavClIniFileSectionCursor& section, const char* option, const char* value);
  bool setNewValue(const TavClIniFileOptionCursor& option, const char* value);
  bool deleteSection(const char* name);
  bool deleteSection(const TavClIniFileSectionCursor& section);
  bool deleteOption(const char* section, const char* option);
  bool deleteOption(const TavClIniFileSectionCursor& section, const char* option);
  bool deleteOption(const TavClIniFileOptionCursor& option);

  // The converters the look-ups and the option cursor share.
  bool isTrueValue(const char* value) const;
  static char toCharValue(const char* value);

 protected:
  void addSection(TavClIniFileSection* section);
  void addOption(TavClIniFileOption* option);
  TavClIniFileSection* getExistingSection(const char* begin, const char* end) const;
  bool load(std::istream& in, char delimiter, bool appendDuplicateSections, bool allowContinuation);
  // Reads the next line into `buffer` (kMaxLineLength + 1 characters); false at the end.
  // A longer line is reported, skipped, and the line after it delivered.
  bool nextLine(std::istream& in, char* buffer, char delimiter);
  // Reads lines until one that is neither blank nor a comment; false at the end.
  bool skipComment(std::istream& in, char* buffer, char delimiter);
  // Reports a parse error; false when the handler asks to stop.
  bool error(unsigned long id);

 private:
  friend class TavClIniFileSectionCursor;
  friend class TavClIniFileOptionCursor;
  TavClIniFileOption* findOption(const TavClIniFileSection* section, const char* name) const;
  TavClIniFileSection* findSection(const char* name) const;

  TavClIniFileSection* firstSection = nullptr;
  TavClIniFileSection* lastSection = nullptr;
  unsigned int lineCounter = 0;
  mutable TavClIniFileSection* currentSection = nullptr;
  ErrorHandler errorHandler = nullptr;
  void* errorHandlerUserData = nullptr;
  // Set while a load runs: the sections by name, for merging duplicate headers in constant time.
  TavClIniFileSectionIndex* sectionIndex = nullptr;
  // Set when the error handler stopped the parse inside the line reader.
  bool parseStopped = false;
  // Set while load(bool) reads a file: CR LF line ends then read as LF.
  bool readingTextFile = false;
};

// Walks the sections of a model in file order; deleted sections are visited with empty names.
class TAV_API TavClIniFileSectionCursor : public TavClUniDirCursorABase {
 public:
  explicit TavClIniFileSectionCursor(const TavClIniFile& file);
  ~TavClIniFileSectionCursor() override;
  bool isValid() const override { return current != nullptr; }
  bool setToFirst() override;
  bool setToNext() override;
  virtual bool setTo(const char* name);
  bool matches(const char* name) const;
  const char* getSection() const;

 private:
  friend class TavClIniFile;
  friend class TavClIniFileOptionCursor;
  const TavClIniFile* file;
  TavClIniFileSection* current;
};

// Walks the options of one section in file order.
class TAV_API TavClIniFileOptionCursor : public TavClUniDirCursorABase {
 public:
  // Over the current section of `file`, which must exist.
  explicit TavClIniFileOptionCursor(const TavClIniFile& file);
  explicit TavClIniFileOptionCursor(const TavClIniFileSectionCursor& section);
  ~TavClIniFileOptionCursor() override;
  bool isValid() const override { return current != nullptr; }
  bool setToFirst() override;
  bool setToNext() override;
  virtual bool setTo(const char* name);
  bool matches(const char* name) const;
  const char* getOption() const;
  const char* getValue() const;
  const char* getValue(char& value) const;
  const char* getValue(int& value) const;
  const char* getValue(unsigned int& value) const;
  const char* getValue(long& value) const;
  const char* getValue(unsigned long& value) const;
  const char* getValueBool(bool& value) const;
  const char* getComment() const;

 private:
  friend class TavClIniFile;
  TavClIniFileOptionCursor(const TavClIniFile& file, const TavClIniFileSection* section);
  const TavClIniFile* file;
  const TavClIniFileSection* section;
  TavClIniFileOption* current;
};

// Writes the model back to a file. save() writes in the parser's own format as it always has:
// a leading empty line, options with empty values dropped, double quotes inside quoted values
// left as they are, and blanks at either end of a value unquoted. saveAtomic() writes so that
// loading the file again gives back exactly the same model, into a temporary file in the same
// directory that then replaces the target, so a crash leaves either the old or the new file.
// The new file keeps the old one's permissions; a read-only file is not replaced (false).
// It quotes values with blanks at either end, a double quote (escaped), an apostrophe, "$(",
// a ';' or a control character, keeps empty values, and spreads a value too long for one line
// over continuation lines (load such a file with continuation allowed). It returns false and
// leaves the file as it was when a write fails or the model holds a name or comment that no
// line reads back as written (e.g. an option name with blanks added through addOption).
class TAV_API TavClIniFileSave : public TavClIniFile {
 public:
  explicit TavClIniFileSave(const TavClFilenameABase& name);
  ~TavClIniFileSave() override;

  bool save();
  bool save(std::ofstream& out);
  bool saveAtomic();

  // The writers of single lines, for classes that write further typed entries. Each opens the
  // object's own stream first when no save has, and returns the stream's state.
  bool saveSection(std::ofstream& out, const char* name, const char* comment);
  bool saveOption(std::ofstream& out, const char* name, const char* value, const char* comment);
  bool saveOption(std::ofstream& out, const char* name, char value, const char* comment);
  bool saveOption(std::ofstream& out, const char* name, int value, const char* comment);
  bool saveOption(std::ofstream& out, const char* name, unsigned int value, const char* comment);
  bool saveOption(std::ofstream& out, const char* name, long value, const char* comment);
  bool saveOption(std::ofstream& out, const char* name, unsigned long value, const char* comment);
  bool saveOptionBool(std::ofstream& out, const char* name, bool value, const char* comment);
  void saveOption(std::ofstream& out, const char* name);
  void saveChar(std::ofstream& out, char c) const;
  void saveComment(std::ofstream& out, const char* comment) const;

 private:
  void openOwnStream();

  std::ofstream stream;
  bool streamReady = false;
};

#endif /* TAV_INI_H */
