// tav_message_catalog_proxy.cpp - catalog handles with a text buffer, and the C functions.

#include <cstdarg>
#include <cstring>

#include "tav_message.h"

TavClMessageCatalogProxy::TavClMessageCatalogProxy(const TavClFilenameABase& name)
    : ownsCatalog(1), catalog(new TavClMessageCatalog(name)) {
  textBuffer[0] = '\0';
}

TavClMessageCatalogProxy::TavClMessageCatalogProxy(const TavClFilenameABase& name,
                                                   const char* const* table, unsigned long size)
    : TavClMessageCatalogProxy(name) {
  if (!catalog->isModuleLoaded()) catalog->useStringTable(table, size);
}

TavClMessageCatalogProxy::TavClMessageCatalogProxy(const TavClMessageCatalog* catalog)
    : ownsCatalog(0), catalog(const_cast<TavClMessageCatalog*>(catalog)) {
  textBuffer[0] = '\0';
}

TavClMessageCatalogProxy::~TavClMessageCatalogProxy() {
  if (ownsCatalog != 0) delete catalog;
  catalog = nullptr;
}

const char* TavClMessageCatalogProxy::getMessage(unsigned long id) {
  return getMessage(id, nullptr);
}

// A failure notice can be longer than the buffer by the catalog's file name: cut it.
const char* TavClMessageCatalogProxy::getMessage(unsigned long id,
                                                 const char* const vars[TAV_MSG_VARIABLE_COUNT]) {
  static const char* const kNone[TAV_MSG_VARIABLE_COUNT] = {};
  const TavClMessage message(*catalog, id, vars != nullptr ? vars : kNone);
  const char* text = message.getText();
  size_t length = std::strlen(text);
  if (length > TAV_MSG_MAX_LENGTH) length = TAV_MSG_MAX_LENGTH;
  std::memcpy(textBuffer, text, length);
  textBuffer[length] = '\0';
  return textBuffer;
}

bool TavClMessageCatalogProxy::isValidMessageId(unsigned long id) const {
  return TavClMessage(*catalog, id).isMessageLoaded();
}

unsigned int TavClMessageCatalogProxy::getLanguage() const { return catalog->getLanguage(); }

// The C functions. Null handles are accepted everywhere: they read as a catalog without any
// message (false, language 0, an empty text).

TavClMessageCatalogProxy* tavMsgCatOpen(const char* fileName) {
  auto* proxy = new TavClMessageCatalogProxy(TavClFilename(fileName));
  if (proxy->getCatalog()->isModuleLoaded()) return proxy;
  delete proxy;
  return nullptr;
}

TavClMessageCatalogProxy* tavMsgCatOpenAttach(const TavClMessageCatalog* catalog) {
  if (catalog == nullptr || !catalog->isModuleLoaded()) return nullptr;
  return new TavClMessageCatalogProxy(catalog);
}

TavClMessageCatalogProxy* tavMsgCatOpenOrUseStringTable(const char* fileName,
                                                        const char* const* table,
                                                        unsigned long size) {
  return new TavClMessageCatalogProxy(TavClFilename(fileName), table, size);
}

int tavMsgCatIsValid(TavClMessageCatalogProxy* handle, unsigned long id) {
  return handle != nullptr && handle->isValidMessageId(id);
}

unsigned int tavMsgCatGetLanguage(TavClMessageCatalogProxy* handle) {
  return handle != nullptr ? handle->getLanguage() : 0;
}

const char* tavMsgCatGet(TavClMessageCatalogProxy* handle, unsigned long id) {
  return handle != nullptr ? handle->getMessage(id) : "";
}

// The list is read up to its null pointer or its tenth entry, whichever comes first, so that
// a list without its null pointer is still read no further than ten entries.
const char* tavMsgCatGetVar(TavClMessageCatalogProxy* handle, unsigned long id,
                            const char* firstVariable, ...) {
  const char* vars[TAV_MSG_VARIABLE_COUNT] = {};
  if (firstVariable != nullptr) {
    vars[0] = firstVariable;
    va_list rest;
    va_start(rest, firstVariable);
    for (size_t i = 1; i < TAV_MSG_VARIABLE_COUNT; ++i) {
      const char* variable = va_arg(rest, const char*);
      if (variable == nullptr) break;
      vars[i] = variable;
    }
    va_end(rest);
  }
  return handle != nullptr ? handle->getMessage(id, vars) : "";
}

void tavMsgCatClose(TavClMessageCatalogProxy* handle) { delete handle; }
