// tav_bitarray.cpp - the bit array: storage, single bits, comparison and the stream form.

#include "tav_bitarray.h"

#include <cstring>
#include <istream>
#include <memory>
#include <ostream>

#include "tav_memmgr.h"

namespace {

using OwnedBytes = std::unique_ptr<unsigned char, decltype(&tavFree)>;

OwnedBytes allocateBytes(size_t count) {
  return OwnedBytes(static_cast<unsigned char*>(tavCalloc(count, 1)), &tavFree);
}

}  // namespace

TavClPersistencyABase::~TavClPersistencyABase() = default;

TavClBitArray::TavClBitArray(size_t bitCount)
    : bitCount(bitCount), bytes(allocateBytes(getByteCount()).release()) {}

TavClBitArray::TavClBitArray(const TavClBitArray& other)
    : TavClPersistencyABase(other),
      bitCount(other.bitCount),
      bytes(allocateBytes(other.getByteCount()).release()) {
  std::memcpy(bytes, other.bytes, getByteCount());
}

// The new block is filled before the old one goes, so that self-assignment copies from live
// memory and a failed allocation leaves this array whole.
TavClBitArray& TavClBitArray::operator=(const TavClBitArray& other) {
  if (this == &other) return *this;
  OwnedBytes copy = allocateBytes(other.getByteCount());
  std::memcpy(copy.get(), other.bytes, other.getByteCount());
  tavFree(bytes);
  bytes = copy.release();
  bitCount = other.bitCount;
  return *this;
}

TavClBitArray::~TavClBitArray() { tavFree(bytes); }

bool TavClBitArray::operator==(const TavClBitArray& other) const {
  return bitCount == other.bitCount && std::memcmp(bytes, other.bytes, getByteCount()) == 0;
}

bool TavClBitArray::isBitSet(size_t index) const {
  if (index >= bitCount) return false;
  return (bytes[index / 8] & (1u << (index % 8))) != 0;
}

bool TavClBitArray::setBit(size_t index, bool value) {
  if (index >= bitCount) return false;
  const auto mask = static_cast<unsigned char>(1u << (index % 8));
  if (value) {
    bytes[index / 8] |= mask;
  } else {
    bytes[index / 8] &= static_cast<unsigned char>(~mask);
  }
  return true;
}

void TavClBitArray::clearAll() { std::memset(bytes, 0, getByteCount()); }

bool TavClBitArray::write(std::ostream& stream) const {
  stream.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(getByteCount()));
  return !stream.fail();
}

// Reading goes to a fresh block that replaces the old one only when the stream had every byte.
bool TavClBitArray::read(std::istream& stream) {
  const size_t count = getByteCount();
  OwnedBytes incoming = allocateBytes(count);
  stream.read(reinterpret_cast<char*>(incoming.get()), static_cast<std::streamsize>(count));
  if (static_cast<size_t>(stream.gcount()) != count) return false;
  tavFree(bytes);
  bytes = incoming.release();
  return true;
}
