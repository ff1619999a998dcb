// tav_message_catalog.cpp - opening a catalog, choosing its language and looking messages up.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tav_language_id.h"
#include "tav_message.h"
#include "tav_message_substitution.h"
#include "tav_message_texts.h"
#include "tav_msg_os.h"

namespace {

constexpr unsigned long kProbeMessageId = 1;
constexpr char kSignature[] = "[TAV_MSGTAB_SIGNATURE]";
constexpr char kMissingMessageNotice[] = "UNABLE TO LOAD MESSAGE #%1 FROM CATALOG: ";
constexpr char kMissingCatalogNotice[] = "UNABLE TO LOAD MESSAGE CATALOG: ";
const char* const kNoVariables[TAV_MSG_VARIABLE_COUNT] = {"???", "???", "???", "???", "???",
                                                          "???", "???", "???", "???", "???"};

// A name without a path is looked for beside the library first, so that a program finds the
// catalogs installed with the library wherever it runs; then where the platform looks.
tav::os::CatalogModule* openModule(const TavClFilename& name) {
  if (name.getLength() == 0) return nullptr;
  if (name.getName() == name.getAsCString()) {
    char directory[TAV_PATH_BUFFER_SIZE];
    if (tav::os::libraryDirectory(directory, sizeof directory)) {
      const TavClFilename besideLibrary(directory, name.getAsCString(), nullptr);
      tav::os::CatalogModule* module = nullptr;
      if (tav::os::openCatalogModule(besideLibrary.getAsCString(), &module).ok()) return module;
    }
  }
  tav::os::CatalogModule* module = nullptr;
  tav::os::openCatalogModule(name.getAsCString(), &module);
  return module;
}

}  // namespace

TavClMessageCatalog::TavClMessageCatalog() : TavClFile(TavClFilename()), isDefaultCatalog(true) {
  name.setNewExtension(tav::os::catalogModuleExtension());
  init();
}

TavClMessageCatalog::TavClMessageCatalog(const TavClFilenameABase& fileName) : TavClFile(fileName) {
  name.setNewExtension(tav::os::catalogModuleExtension());
  init();
}

TavClMessageCatalog::~TavClMessageCatalog() {
  if (isLoaded) tav::os::closeCatalogModule(moduleHandle);
}

// The language is the user's, else the system's, else English (United States), whichever the
// module has texts in. It is read from the environment or asked of the system without setting
// the C runtime's locale: that belongs to the program, which may print numbers in its own
// conventions, and changing it is not safe while other threads format text.
void TavClMessageCatalog::init() {
  moduleHandle = openModule(name);
  isLoaded = moduleHandle != nullptr;
  if (!isLoaded) return;
  languageFound = true;
  languageId = tav::os::userDefaultLanguageId();
  if (probe(kProbeMessageId)) return;
  languageId = tav::os::systemDefaultLanguageId();
  if (probe(kProbeMessageId)) return;
  languageId = tav::kLanguageIdEnglishUS;
  languageFound = false;
}

bool TavClMessageCatalog::probe(unsigned long id) const {
  char text[TAV_MSG_MAX_LENGTH + 1];
  return tav::os::formatCatalogMessage(moduleHandle, static_cast<uint32_t>(id), languageId,
                                       kNoVariables, text, TAV_MSG_MAX_LENGTH)
      .ok();
}

void TavClMessageCatalog::useStringTable(const char* const* table, unsigned long size) {
  stringTable = table;
  stringTableSize = table != nullptr ? static_cast<uint32_t>(size) : 0;
  stringTableSignatureCount = 0;
  if (stringTableSize == 0 || table[0] == nullptr) return;
  const char* signature = std::strstr(table[0], kSignature);
  if (signature != nullptr) {
    stringTableSignatureCount =
        static_cast<uint32_t>(std::strtoul(signature + sizeof kSignature - 1, nullptr, 10));
  }
}

bool TavClMessageCatalog::isValidMessageId(unsigned long id) { return id != 0; }

bool TavClMessageCatalog::lookUp(unsigned long id,
                                 const char* const variables[TAV_MSG_VARIABLE_COUNT], char* out,
                                 size_t* length) const {
  if (isLoaded && id <= UINT32_MAX &&
      tav::os::formatCatalogMessage(moduleHandle, static_cast<uint32_t>(id), languageId, variables,
                                    out, TAV_MSG_MAX_LENGTH)
          .ok()) {
    *length = std::strlen(out);
    return true;
  }
  if (stringTable != nullptr && id < stringTableSize) {
    // The built-in table never changes, so its texts are taken apart once.
    if (stringTable == tavMsgCatGetBuiltInStringTable() &&
        id < tavMsgCatGetBuiltInStringTableSize()) {
      *length = tav::CompiledMessageTexts::builtIn().substitute(id, out, TAV_MSG_MAX_LENGTH,
                                                                variables, TAV_MSG_VARIABLE_COUNT);
      return true;
    }
    const char* entry = stringTable[id] != nullptr ? stringTable[id] : "";
    *length = tav::substituteMessageVariables(out, TAV_MSG_MAX_LENGTH, entry, variables,
                                              TAV_MSG_VARIABLE_COUNT);
    return true;
  }
  char idText[24];
  std::snprintf(idText, sizeof idText, "%lu", id);
  const char* const noticeVariables[1] = {idText};
  size_t written = tav::substituteMessageVariables(
      out, TAV_MSG_MAX_LENGTH, isLoaded ? kMissingMessageNotice : kMissingCatalogNotice,
      noticeVariables, 1);
  const size_t nameLength = name.getLength();  // at most TAV_PATH_MAX_LENGTH
  std::memcpy(out + written, name.getAsCString(), nameLength + 1);
  *length = written + nameLength;
  return false;
}
