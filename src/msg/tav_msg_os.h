// tav_msg_os.h - the operating-system calls of the message catalogs.
//
// A catalog module is a resource-only DLL read with the system's message formatter on Windows,
// and a family of X/Open catalogs (dir/name.cat, dir/<ll_TT>/name.cat, dir/<ll>/name.cat) on
// POSIX. Implemented once per platform in posix/ and win32/.

#ifndef TAV_MSG_OS_H
#define TAV_MSG_OS_H

#include <cstddef>
#include <cstdint>

#include "../core/tav_os_status.h"

namespace tav::os {

struct CatalogModule;

// ".DLL" on Windows, ".cat" on POSIX.
const char* catalogModuleExtension();

// Opens the catalog module at path into *module; nothing is opened when the status is a failure
// (notFound when there is no such module).
OsStatus openCatalogModule(const char* path, CatalogModule** module);
void closeCatalogModule(CatalogModule* module);

// Writes message id in the language with the ten variables (none null) put in into out, at
// most limit characters and a terminator. notFound when the module lacks the message in that
// language, which an empty text is not.
OsStatus formatCatalogMessage(CatalogModule* module, uint32_t id, uint16_t languageId,
                          const char* const variables[10], char* out, size_t limit);

// The user's and the system's default language as Windows language ids.
uint16_t userDefaultLanguageId();
uint16_t systemDefaultLanguageId();

// The directory of the library's own module with its final separator, in out of size bytes;
// false when it cannot be told or does not fit.
bool libraryDirectory(char* out, size_t size);

}  // namespace tav::os

#endif  // TAV_MSG_OS_H
