/* tav_message.h - message catalogs and messages with variables.
 *
 * Every text the library shows to a user is a numbered message fetched from a catalog, so that
 * the texts can be translated without touching code. A catalog is a catalog module (a
 * resource-only "name.DLL" on Windows; on POSIX the X/Open catalogs "dir/name.cat",
 * "dir/<ll_TT>/name.cat" and "dir/<ll>/name.cat") or, when no module can be loaded, a string
 * table compiled into the program. The library's own messages come in the catalog named
 * TAV_MSG_LIBRARY_CATALOG, installed beside the library, and in the built-in table.
 *
 * The language is chosen once, when a catalog is opened: the user's language, else the
 * system's, else 1033 (English, United States), each tried with message 1. Language ids are
 * the Windows numbers on every platform (1033 English, 1031 German, ...).
 *
 * Placeholders "%1" to "%10" take the message's variables, "%%" is one "%"; a placeholder
 * without a variable shows "???". Messages are at most TAV_MSG_MAX_LENGTH characters, longer
 * texts are cut. A lookup that fails gives a notice naming the id and the catalog instead of
 * the text: "UNABLE TO LOAD MESSAGE #<id> FROM CATALOG: <file>" when the module lacks the id,
 * "UNABLE TO LOAD MESSAGE CATALOG: <file>" when there is neither module nor table.
 *
 * The C part of this header compiles as C.
 */
#ifndef TAV_MESSAGE_H
#define TAV_MESSAGE_H

#include <stddef.h>
#include <stdint.h>

#include "tav_export.h"

#define TAV_MSG_MAX_LENGTH 4096
#define TAV_MSG_VARIABLE_COUNT 10
/* Entries of the built-in table, the signature line (entry 0) included. */
#define TAV_MSG_BUILTIN_TABLE_SIZE 221
/* The base name of the library's own catalog module, found beside the library. */
#define TAV_MSG_LIBRARY_CATALOG "tavmsg"

#ifdef __cplusplus
class TavClMessageCatalog;
class TavClMessageCatalogProxy;
#else
typedef struct TavClMessageCatalog TavClMessageCatalog;
typedef struct TavClMessageCatalogProxy TavClMessageCatalogProxy;
#endif

TAV_EXTERN_C_BEGIN

/* The built-in table of the library's messages, indexed by message id, and its size. */
TAV_API const char* const* tavMsgCatGetBuiltInStringTable(void);
TAV_API unsigned long tavMsgCatGetBuiltInStringTableSize(void);

/* A handle owning a new catalog for fileName (its extension is replaced by the platform's
 * catalog extension); null when the catalog module cannot be loaded. */
TAV_API TavClMessageCatalogProxy* tavMsgCatOpen(const char* fileName);
/* A handle on a catalog owned by the caller; null when that catalog has no module loaded. */
TAV_API TavClMessageCatalogProxy* tavMsgCatOpenAttach(const TavClMessageCatalog* catalog);
/* A handle owning a new catalog that falls back to the table when its module cannot be
 * loaded. The table is borrowed: it must outlive the handle. Never null. */
TAV_API TavClMessageCatalogProxy* tavMsgCatOpenOrUseStringTable(const char* fileName,
                                                                const char* const* table,
                                                                unsigned long size);
/* Whether the message can be loaded from the module or the table. */
TAV_API int tavMsgCatIsValid(TavClMessageCatalogProxy* handle, unsigned long id);
TAV_API unsigned int tavMsgCatGetLanguage(TavClMessageCatalogProxy* handle);
/* The text of a message in the handle's buffer, valid until the next call on the handle. */
TAV_API const char* tavMsgCatGet(TavClMessageCatalogProxy* handle, unsigned long id);
/* The same with variables: a list of texts ended by a null pointer, of which at most the
 * first ten are read. */
TAV_API const char* tavMsgCatGetVar(TavClMessageCatalogProxy* handle, unsigned long id,
                                    const char* firstVariable, ...);
/* Releases the handle, and its catalog when the handle owns it; null is ignored. */
TAV_API void tavMsgCatClose(TavClMessageCatalogProxy* handle);

TAV_EXTERN_C_END

#ifdef __cplusplus

#include <ostream>

#include "tav_file.h"
#include "tav_filename.h"
#include "tav_memmgr.h"

namespace tav::os {
struct CatalogModule;
}

/* The file part holds the catalog module's name (getName). */
class TAV_API TavClMessageCatalog : public TavClFile {
 public:
  /* The catalog of the empty name: it has no module, and serves a table once one is given. */
  TavClMessageCatalog();
  /* The catalog module of name, with the platform's catalog extension in place of any other.
   * A name without a path is looked for beside the library first, then where the platform
   * looks for it (the current directory on POSIX). */
  explicit TavClMessageCatalog(const TavClFilenameABase& name);
  ~TavClMessageCatalog() override;
  TavClMessageCatalog(const TavClMessageCatalog&) = delete;
  TavClMessageCatalog& operator=(const TavClMessageCatalog&) = delete;

  /* Installs the fallback table for a catalog without module. Entry 0 is the signature line
   * "[TAV_MSGTAB_SIGNATURE] <count>"; size alone bounds the lookups. The table is borrowed. */
  void useStringTable(const char* const* table, unsigned long size);
  /* Every id but 0. */
  static bool isValidMessageId(unsigned long id);

  bool isModuleLoaded() const { return isLoaded; }
  bool isDefault() const { return isDefaultCatalog; }
  /* The language every lookup uses; 0 without a module. */
  unsigned int getLanguage() const { return languageId; }
  /* The user's or the system's language had the probe message. */
  bool isLanguageFound() const { return languageFound; }
  /* The number the table's signature line states, 0 without table. */
  unsigned long getStringTableSignatureCount() const { return stringTableSignatureCount; }

  /* Scratch size a lookup writes into: a message, or a failure notice with the file name. */
  static constexpr size_t kLookupBufferSize = TAV_MSG_MAX_LENGTH + TAV_PATH_MAX_LENGTH + 1;
  /* Writes the message with variables (ten entries, none null) into out, which holds
   * kLookupBufferSize bytes; true when the module or the table had it, else out holds the
   * failure notice. Returns the length through length. */
  bool lookUp(unsigned long id, const char* const variables[TAV_MSG_VARIABLE_COUNT], char* out,
              size_t* length) const;

 private:
  void init();
  bool probe(unsigned long id) const;

  tav::os::CatalogModule* moduleHandle = nullptr;
  bool isLoaded = false;
  bool isDefaultCatalog = false;
  const char* const* stringTable = nullptr;
  uint32_t stringTableSize = 0;
  uint16_t languageId = 0;
  bool languageFound = false;
  uint32_t stringTableSignatureCount = 0;
};

/* One message text with its variables put in. Texts of up to kInlineLength characters live
 * inside the object, longer ones on the memory manager's heap. */
class TAV_API TavClMessage : public TavClMemoryManagedObject {
 public:
  static constexpr size_t kInlineLength = 80;

  TavClMessage(const TavClMessageCatalog& catalog, unsigned long id);
  TavClMessage(const TavClMessageCatalog& catalog, unsigned long id, const char* var1,
               const char* var2 = nullptr, const char* var3 = nullptr, const char* var4 = nullptr,
               const char* var5 = nullptr, const char* var6 = nullptr, const char* var7 = nullptr,
               const char* var8 = nullptr, const char* var9 = nullptr, const char* var10 = nullptr);
  /* Exactly ten entries, null for absent ones. */
  TavClMessage(const TavClMessageCatalog& catalog, unsigned long id,
               const char* const vars[TAV_MSG_VARIABLE_COUNT]);
  TavClMessage(const TavClMessage& other);
  /* Copies text, id and loaded state but keeps this message's catalog, so that a later
   * setNewMessageId still looks in the catalog this message was built with. */
  TavClMessage& operator=(const TavClMessage& other);
  ~TavClMessage();

  /* Reloads from the same catalog under another id and returns the new text. */
  const char* setNewMessageId(unsigned long id);
  const char* setNewMessageId(unsigned long id, const char* var1, const char* var2 = nullptr,
                              const char* var3 = nullptr, const char* var4 = nullptr,
                              const char* var5 = nullptr, const char* var6 = nullptr,
                              const char* var7 = nullptr, const char* var8 = nullptr,
                              const char* var9 = nullptr, const char* var10 = nullptr);

  const char* getText() const { return text; }
  unsigned long getMessageId() const { return messageId; }
  /* The text came from the catalog's module or table, not a failure notice. */
  bool isMessageLoaded() const { return isLoaded; }
  bool isTextInline() const { return text == inlineText; }

  /* The substitution of the variables (null ones read "???") into at most outSize
   * characters plus a terminator; returns the count written. */
  static unsigned long replaceVars(char* out, unsigned long outSize, const char* in,
                                   const char* const vars[], unsigned long varCount);

 private:
  const char* loadMessage(const char* const vars[TAV_MSG_VARIABLE_COUNT]);
  void storeText(const char* source, size_t length);
  void releaseText();

  const TavClMessageCatalog* catalog;
  char inlineText[kInlineLength + 1];
  char* text;
  uint32_t messageId;
  bool isLoaded;
};

TAV_API std::ostream& operator<<(std::ostream& stream, const TavClMessage& message);

/* A catalog and a text buffer, for callers that want a text pointer instead of a message
 * object; the C functions hand out proxies as handles. Not for use by several threads. */
class TAV_API TavClMessageCatalogProxy : public TavClMemoryManagedObject {
 public:
  explicit TavClMessageCatalogProxy(const TavClFilenameABase& name);
  /* Falls back to the table when the module cannot be loaded; the table is borrowed. */
  TavClMessageCatalogProxy(const TavClFilenameABase& name, const char* const* table,
                           unsigned long size);
  /* Attaches to a catalog owned elsewhere, which must outlive the proxy. */
  explicit TavClMessageCatalogProxy(const TavClMessageCatalog* catalog);
  ~TavClMessageCatalogProxy();
  TavClMessageCatalogProxy(const TavClMessageCatalogProxy&) = delete;
  TavClMessageCatalogProxy& operator=(const TavClMessageCatalogProxy&) = delete;

  /* The text, cut to TAV_MSG_MAX_LENGTH characters, in this proxy's buffer; valid until the
   * next getMessage. vars has ten entries, null for absent ones. */
  const char* getMessage(unsigned long id);
  const char* getMessage(unsigned long id, const char* const vars[TAV_MSG_VARIABLE_COUNT]);
  bool isValidMessageId(unsigned long id) const;
  unsigned int getLanguage() const;
  const TavClMessageCatalog* getCatalog() const { return catalog; }

 private:
  uint32_t ownsCatalog;
  TavClMessageCatalog* catalog;
  char textBuffer[TAV_MSG_MAX_LENGTH + 1];
};

#endif /* __cplusplus */

#endif /* TAV_MESSAGE_H */
