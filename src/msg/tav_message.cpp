// tav_message.cpp - one message text with its variables, inline when short.

#include <cstring>
#include <ostream>

#include "tav_message.h"
#include "tav_message_substitution.h"


TavClMessage::TavClMessage(const TavClMessageCatalog& catalog, unsigned long id)
    : catalog(&catalog), text(inlineText), messageId(static_cast<uint32_t>(id)), isLoaded(false) {
  inlineText[0] = '\0';
  loadMessage(nullptr);
}

TavClMessage::TavClMessage(const TavClMessageCatalog& catalog, unsigned long id, const char* var1,
                           const char* var2, const char* var3, const char* var4, const char* var5,
                           const char* var6, const char* var7, const char* var8, const char* var9,
                           const char* var10)
    : catalog(&catalog), text(inlineText), messageId(static_cast<uint32_t>(id)), isLoaded(false) {
  inlineText[0] = '\0';
  const char* const vars[TAV_MSG_VARIABLE_COUNT] = {var1, var2, var3, var4, var5,
                                                    var6, var7, var8, var9, var10};
  loadMessage(vars);
}

TavClMessage::TavClMessage(const TavClMessageCatalog& catalog, unsigned long id,
                           const char* const vars[TAV_MSG_VARIABLE_COUNT])
    : catalog(&catalog), text(inlineText), messageId(static_cast<uint32_t>(id)), isLoaded(false) {
  inlineText[0] = '\0';
  loadMessage(vars);
}

TavClMessage::TavClMessage(const TavClMessage& other)
    : catalog(other.catalog),
      text(inlineText),
      messageId(other.messageId),
      isLoaded(other.isLoaded) {
  inlineText[0] = '\0';
  storeText(other.text, std::strlen(other.text));
}

TavClMessage& TavClMessage::operator=(const TavClMessage& other) {
  if (this == &other) return *this;
  // The target keeps its catalog.
  storeText(other.text, std::strlen(other.text));
  messageId = other.messageId;
  isLoaded = other.isLoaded;
  return *this;
}

TavClMessage::~TavClMessage() { releaseText(); }

const char* TavClMessage::setNewMessageId(unsigned long id) {
  messageId = static_cast<uint32_t>(id);
  return loadMessage(nullptr);
}

const char* TavClMessage::setNewMessageId(unsigned long id, const char* var1, const char* var2,
                                          const char* var3, const char* var4, const char* var5,
                                          const char* var6, const char* var7, const char* var8,
                                          const char* var9, const char* var10) {
  messageId = static_cast<uint32_t>(id);
  const char* const vars[TAV_MSG_VARIABLE_COUNT] = {var1, var2, var3, var4, var5,
                                                    var6, var7, var8, var9, var10};
  return loadMessage(vars);
}

unsigned long TavClMessage::replaceVars(char* out, unsigned long outSize, const char* in,
                                        const char* const vars[], unsigned long varCount) {
  return static_cast<unsigned long>(
      tav::substituteMessageVariables(out, outSize, in != nullptr ? in : "", vars, varCount));
}

const char* TavClMessage::loadMessage(const char* const vars[TAV_MSG_VARIABLE_COUNT]) {
  const char* variables[TAV_MSG_VARIABLE_COUNT];
  for (size_t i = 0; i < TAV_MSG_VARIABLE_COUNT; ++i) {
    variables[i] = vars != nullptr && vars[i] != nullptr ? vars[i] : tav::kUnknownMessageVariable;
  }
  releaseText();
  isLoaded = false;
  char scratch[TavClMessageCatalog::kLookupBufferSize];
  size_t length = 0;
  const bool loaded = catalog->lookUp(messageId, variables, scratch, &length);
  storeText(scratch, length);
  isLoaded = loaded;
  return text;
}

// Replaces the text; on a failed allocation the old text stays.
void TavClMessage::storeText(const char* source, size_t length) {
  if (length <= kInlineLength) {
    std::memmove(inlineText, source, length);
    inlineText[length] = '\0';
    releaseText();
    return;
  }
  char* block = static_cast<char*>(tavMalloc(length + 1));
  std::memcpy(block, source, length);
  block[length] = '\0';
  releaseText();
  text = block;
}

void TavClMessage::releaseText() {
  if (text != inlineText) tavFree(text);
  text = inlineText;
}

std::ostream& operator<<(std::ostream& stream, const TavClMessage& message) {
  return stream << message.getText();
}
