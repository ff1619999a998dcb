// tav_resource_key.cpp - building resource names from parts in the portable key alphabet.

#include "tav_resource_key.h"

#include <cstring>

namespace {

// Characters that every platform accepts in the name of a semaphore or shared memory. A byte
// outside them is replaced by the character at its value modulo 64, so the final "@" is kept
// where it appears but never stands in for another byte.
constexpr char kKeyAlphabet[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-@";
static_assert(sizeof(kKeyAlphabet) == 65 + 1, "64 replacement characters and the @");

bool isInKeyAlphabet(unsigned char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || character == '_' || character == '-' ||
         character == '@';
}

char mapKeyCharacter(unsigned char character) {
  if (character == '\\') return ':';
  if (isInKeyAlphabet(character)) return static_cast<char>(character);
  return kKeyAlphabet[character % 64];
}

}  // namespace

TavClResourceKeyABase::TavClResourceKeyABase(const char* firstPart, const char* secondPartText,
                                             const char* thirdPart)
    : keyText{}, length(0), secondPart(keyText) {
  add(firstPart);
  // The second part begins behind the ":" that add puts in front of it, or at the start of the
  // text when the first part was empty and no ":" is needed.
  const uint64_t secondPartOffset = length == 0 ? 0 : length + 1;
  add(secondPartText);
  secondPart = keyText + (secondPartOffset < length ? secondPartOffset : length);
  if (thirdPart != nullptr) add(thirdPart);
}

TavClResourceKeyABase::TavClResourceKeyABase(const TavClResourceKeyABase& other)
    : keyText{}, length(0), secondPart(keyText) {
  *this = other;
}

TavClResourceKeyABase& TavClResourceKeyABase::operator=(const TavClResourceKeyABase& other) {
  if (this == &other) return *this;
  std::memcpy(keyText, other.keyText, sizeof(keyText));
  length = other.length;
  secondPart = keyText + (other.secondPart - other.keyText);
  return *this;
}

TavClResourceKeyABase::~TavClResourceKeyABase() = default;

void TavClResourceKeyABase::add(const char* part) {
  constexpr uint64_t kMaxLength = kKeyCapacity - 1;
  if (length != 0 && length < kMaxLength) keyText[length++] = ':';
  if (part != nullptr) {
    for (; *part != '\0' && length < kMaxLength; ++part) {
      keyText[length++] = mapKeyCharacter(static_cast<unsigned char>(*part));
    }
  }
  keyText[length] = '\0';
}

bool TavClResourceKeyABase::matches(const char* text) const {
  return text != nullptr && std::strncmp(text, keyText, length) == 0;
}

TavClResourceKeySemaphore::TavClResourceKeySemaphore(const char* key, const char* instance)
    : TavClResourceKeyABase("SEM32", key, instance) {}

TavClResourceKeySemaphore::TavClResourceKeySemaphore(const TavClResourceKeySemaphore& other)
    : TavClResourceKeyABase(other) {}

TavClResourceKeySemaphore& TavClResourceKeySemaphore::operator=(
    const TavClResourceKeySemaphore& other) {
  TavClResourceKeyABase::operator=(other);
  return *this;
}

TavClResourceKeySemaphore::~TavClResourceKeySemaphore() = default;
