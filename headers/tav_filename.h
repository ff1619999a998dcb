/* tav_filename.h - file names and locations held in fixed buffers, split into their parts.
 *
 * A path is at most 260 characters; longer texts are cut at 260, silently. Each object keeps
 * its text in its own buffer and pointers to where its parts begin; copies and assignments
 * re-point them into the copy's buffer.
 *
 * Two path styles, both understood on every platform:
 * - backslash style: an optional drive ("C:"), '\\' separators, an optional server part
 *   ("\\\\server\\share"); names compare ignoring letter case;
 * - slash style: '/' separators; names compare exactly.
 * A text that starts with a drive or holds a backslash is in backslash style; otherwise one that
 * holds a slash is in slash style; a text with neither (a bare name such as "data.ini") takes
 * the native style of the platform: backslash style on Windows, slash style on POSIX. Where a
 * separator is added or normalised, it is the style's own, and normalising means using the
 * native separator.
 *
 * Buffers that the extract functions fill must hold TAV_PATH_BUFFER_SIZE characters. Null
 * texts count as empty ones. Nothing here touches the file system except isExistent and the
 * search for an unused temporary name.
 *
 * The C part of this header compiles as C.
 */
#ifndef TAV_FILENAME_H
#define TAV_FILENAME_H

#include <stddef.h>
#include <stdint.h>

#include "tav_export.h"

#define TAV_PATH_MAX_LENGTH 260
#define TAV_PATH_BUFFER_SIZE (TAV_PATH_MAX_LENGTH + 1)

typedef enum TavEnPathStyle {
  TAV_PATH_STYLE_BACKSLASH = 0, /* drive letters and '\\'; names ignore case */
  TAV_PATH_STYLE_SLASH = 1      /* '/'; names are exact */
} TavEnPathStyle;

TAV_EXTERN_C_BEGIN

/* The directory for temporary files: the value of "TMP" if it is set and not empty, else of
 * "TEMP", on POSIX then of "TMPDIR"; without any of them "C:\\" on Windows and "/tmp/" on
 * POSIX. The text stays valid until the environment changes. */
TAV_API const char* tavGetTmpDirectory(void);

TAV_EXTERN_C_END

#ifdef __cplusplus

class TavClFilenameABase;

/* Where the path of a text begins after its server part, and the text's style. The text lives
 * in the buffer of the derived object. */
class TAV_API TavClPathProperty {
 public:
  /* The style of a text, by the rule at the top of this header. */
  TavEnPathStyle getStyle(const char* text) const;
  /* '/' for a text in slash style, '\\' otherwise. */
  char getPathSep(const char* text) const;
  TavEnPathStyle getPathStyle() const { return style; }
  static TavEnPathStyle getNativeStyle();

  /* The path part: the text after the server part, or the whole text. */
  const char* getPathStart() const { return pathStart; }
  bool hasServer() const { return pathStart != textStart; }
  /* The path part's second character is ':'. */
  bool hasDrive() const;
  /* A server part; else in slash style a leading '/'; else a drive followed by '\\'. "\\dir"
   * without a drive is not absolute. */
  bool isAbsolute() const;
  /* The path part holds only the native separator. */
  bool isNormalized() const;
  /* Replaces every separator of the other style in text by the native separator, in place. */
  static void normalizePath(char* text);
  /* The same towards the separator of the given style: '/' becomes '\\' for backslash style,
   * '\\' becomes '/' for slash style. */
  static void normalizePath(char* text, TavEnPathStyle toStyle);

 protected:
  TavClPathProperty() = default;
  ~TavClPathProperty() = default;
  TavClPathProperty(const TavClPathProperty&) = delete;
  TavClPathProperty& operator=(const TavClPathProperty&) = delete;

  /* Points at text (the derived object's buffer), finds the path part and the style. */
  void init(char* text);
  /* The style of the path part. */
  void determineStyle();
  /* Takes other's path start and style, as offsets from its buffer into this one. */
  void rebaseFrom(const TavClPathProperty& other, char* buffer);

  /* "\\\\server\\share\\dir": the server part runs up to the backslash before "dir". */
  void determinePath();

  char* textStart = nullptr;
  char* pathStart = nullptr;
  TavEnPathStyle style = TAV_PATH_STYLE_BACKSLASH;
};

/* A directory: a path that, unless empty, ends with a separator. */
class TAV_API TavClLocation : public TavClPathProperty {
 public:
  /* The empty location. */
  TavClLocation();
  /* With normalize, separators of the other style in the path part become native ones. */
  explicit TavClLocation(const char* text, bool normalize = false);
  /* At most length characters of text (fewer when it ends sooner). Pass the length as size_t:
   * an int would read as the normalize flag of the constructor above, so it does not compile. */
  TavClLocation(const char* text, size_t length, bool normalize = false);
  /* The name's text up to its base name. */
  explicit TavClLocation(const TavClFilenameABase& name, bool normalize = false);
  TavClLocation(const TavClLocation& other);
  TavClLocation& operator=(const TavClLocation& other);
  TavClLocation& operator=(const char* text);
  ~TavClLocation() = default;

  const char* getAsCString() const { return text; }
  uint32_t getLength() const { return length; }

  /* The directory exists (or at least the name does). */
  bool isExistent() const;
  /* "C:\\", "/", or a server part followed by one separator. */
  bool isRoot() const;

 protected:
  /* Sets up the path property on the buffer and appends the separator (when there is room:
   * a text of 260 characters stays without it). */
  void init(bool normalize);

 private:
  void copyText(const char* source, size_t maxLength);

  char text[TAV_PATH_BUFFER_SIZE];
  uint32_t length;
};

/* A file name split into server, path, base name and extension. "dir/archive.tar.gz" has the
 * base name "archive.tar" and the extension ".gz"; ".profile" has an empty base name and the
 * extension ".profile". */
class TAV_API TavClFilenameABase : public TavClPathProperty {
 public:
  const char* getAsCString() const { return text; }
  uint32_t getLength() const { return length; }
  /* Base name and extension: the name without its path. */
  const char* getName() const { return baseNameStart; }
  /* The extension with its '.', or "" when there is none. */
  const char* getExtension() const { return extensionStart; }
  size_t getBaseNameLength() const { return static_cast<size_t>(extensionStart - baseNameStart); }

  /* The server part of a text that begins with two backslashes, else "". */
  void extractServer(char* out) const;
  /* Everything before the base name (server part included), without the separator in front
   * of the base name unless withSeparator; "" for a name without a path. */
  void extractPath(char* out, bool withSeparator) const;
  void extractBaseName(char* out) const;

  /* This name's path part equals the start of the other's path part. */
  bool matchesPath(const TavClFilenameABase& other) const;
  /* The base names are equal. */
  bool matchesBase(const TavClFilenameABase& other) const;
  /* The extensions are equal; "txt" and ".txt" both match ".txt", and "" matches no extension. */
  bool matchesExtension(const char* extension) const;
  /* The library's wildcard match of pattern against base name and extension. */
  bool matchesWildcardPattern(const char* pattern) const;
  /* Every match ignores letter case in backslash style and is exact in slash style. */

  bool isExistent() const;
  /* A backslash-style name whose components have at most 8 characters without dots and whose
   * extension has at most 3 after its dot; the empty name counts. */
  bool isStyleFAT_8_3() const;

 protected:
  TavClFilenameABase();
  explicit TavClFilenameABase(const char* fullName);
  TavClFilenameABase(const char* fullName, size_t length);
  TavClFilenameABase(const char* path, const char* name, const char* extension);
  TavClFilenameABase(const TavClFilenameABase& other);
  TavClFilenameABase& operator=(const TavClFilenameABase& other);
  ~TavClFilenameABase() = default;

  /* path, the style's separator unless path is empty or ends with one, name, then '.' (unless
   * extension starts with one) and extension when extension is not empty; cut at 260. */
  void init(const char* path, const char* name, const char* extension);
  /* At most maxLength characters of fullName, cut at 260. */
  void init(const char* fullName, size_t maxLength = TAV_PATH_MAX_LENGTH);
  /* The extension starts at the last '.' at or after the base name, else at the end. */
  void determineExtension();

  /* The editors behind TavClFilename and the temporary names. */
  void replaceName(const char* name);
  void replaceBaseName(const char* baseName);
  void replaceExtension(const char* extension);
  void replacePath(const char* path);
  void dropPath();
  /* Appends text after the whole name, cut at 260, leaving the part pointers where they are. */
  void appendKeepingParts(const char* suffix);

  char text[TAV_PATH_BUFFER_SIZE];
  char* baseNameStart;
  char* extensionStart;
  uint32_t length;

 private:
  /* Sets up the path property for the current text and finds base name and extension. */
  void determineParts();
  void rebaseParts(const TavClFilenameABase& other);
};

class TavClTmpFilename;

class TAV_API TavClFilename : public TavClFilenameABase {
 public:
  TavClFilename() = default;
  explicit TavClFilename(const char* fullName) : TavClFilenameABase(fullName) {}
  TavClFilename(const char* fullName, size_t length) : TavClFilenameABase(fullName, length) {}
  TavClFilename(const char* path, const char* name, const char* extension)
      : TavClFilenameABase(path, name, extension) {}
  TavClFilename(const TavClLocation& location, const char* name, const char* extension)
      : TavClFilenameABase(location.getAsCString(), name, extension) {}
  /* Any name: a temporary or a backup name included. */
  TavClFilename(const TavClFilenameABase& other) : TavClFilenameABase(other) {}
  TavClFilename(const TavClFilename& other) = default;
  TavClFilename& operator=(const TavClFilename& other) = default;
  TavClFilename& operator=(const TavClFilenameABase& other) {
    TavClFilenameABase::operator=(other);
    return *this;
  }

  /* Keeps base name and extension and puts them in the location. */
  void setNewPath(const TavClLocation& location) { replacePath(location.getAsCString()); }
  void setNewPath(const char* path) { replacePath(path); }
  /* The location and the name (an extension included, if any). */
  void setNew(const TavClLocation& location, const char* name) {
    init(location.getAsCString(), name, nullptr);
  }
  /* Keeps the path; base name and extension become name. */
  void setNewName(const char* name) { replaceName(name); }
  /* Keeps path and extension. */
  void setNewBaseName(const char* baseName) { replaceBaseName(baseName); }
  /* Replaces the extension; "" removes it together with its dot. */
  void setNewExtension(const char* extension) { replaceExtension(extension); }
  /* Keeps only base name and extension. */
  void removePath() { dropPath(); }
};

/* A name for a new temporary file that no file has yet: up to five characters of the prefix,
 * random characters up to a base name of eight, and as extension the last three decimal digits
 * of the process id in reverse order. The file is not created, so another process may still
 * take the name before the caller opens it. The prefix defaults to "TMP" and the directory to
 * tavGetTmpDirectory(). When no unused name turns up (a directory so long that the random
 * characters are cut away, or one that holds a great many such names), the constructor throws
 * TavClException with class RESOURCE_EXHAUSTED. */
class TAV_API TavClTmpFilename : public TavClFilenameABase {
 public:
  TavClTmpFilename();
  explicit TavClTmpFilename(const char* prefix);
  TavClTmpFilename(const char* directory, const char* prefix);
  explicit TavClTmpFilename(const TavClLocation& directory);
  TavClTmpFilename(const TavClLocation& directory, const char* prefix);
  /* In the directory of name. */
  TavClTmpFilename(const TavClFilename& name, const char* prefix);
  TavClTmpFilename(const TavClTmpFilename& other) = default;
  TavClTmpFilename& operator=(const TavClTmpFilename& other) = default;

  static constexpr const char* kDefaultPrefix = "TMP";
  static constexpr size_t kMaxPrefixLength = 5;
  static constexpr size_t kBaseNameLength = 8;
  /* The digits of the random characters, most significant first. */
  static constexpr const char* kAlphabet = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ@#!%_";

 private:
  void initPrefix(const char* prefix);
};

/* The backup name of a file: ".BAK" after the whole name, so "DATA.INI" becomes
 * "DATA.INI.BAK". Base name and extension are deliberately not found again: the base name stays
 * "DATA" and the extension reads ".INI.BAK". */
class TAV_API TavClBakFilename : public TavClFilenameABase {
 public:
  explicit TavClBakFilename(const TavClFilenameABase& name);
  TavClBakFilename(const TavClBakFilename& other) = default;
  TavClBakFilename& operator=(const TavClBakFilename& other) = default;
};

#endif /* __cplusplus */

#endif /* TAV_FILENAME_H */
