// tav_bitarray.h - a fixed-size array of bits that can be saved to a stream and read back.
//
// Bit i lives in byte i / 8, at the value 1 << (i % 8). The array holds bitCount / 8 + 1 bytes:
// one more than needed when bitCount is a multiple of 8, so that even an empty array owns a
// byte. The stream form is exactly those bytes, nothing else; the size is not stored, so the
// reader must be an array of the same size.

#ifndef TAV_BITARRAY_H
#define TAV_BITARRAY_H

#include <stddef.h>

#include "tav_export.h"
#include "tav_persistency.h"

class TAV_API TavClBitArray : public TavClPersistencyABase {
 public:
  // All bits clear. The bytes come from the memory manager, whose failure throws
  // TavClExceptionFatal.
  explicit TavClBitArray(size_t bitCount);
  TavClBitArray(const TavClBitArray& other);
  // Takes the other's size and bits. On an allocation failure this array is unchanged.
  TavClBitArray& operator=(const TavClBitArray& other);
  ~TavClBitArray() override;

  // Same size and same bytes. Arrays of different sizes are never equal.
  bool operator==(const TavClBitArray& other) const;
  bool operator!=(const TavClBitArray& other) const { return !(*this == other); }

  size_t getBitCount() const { return bitCount; }
  size_t getByteCount() const { return bitCount / 8 + 1; }
  const unsigned char* getBytes() const { return bytes; }

  // False for an index at or past getBitCount().
  bool isBitSet(size_t index) const;
  // Sets or clears one bit. An index at or past getBitCount() changes nothing and gives false.
  bool setBit(size_t index, bool value = true);
  bool clearBit(size_t index) { return setBit(index, false); }
  void clearAll();

  // The getByteCount() raw bytes.
  bool write(std::ostream& stream) const override;
  // Fills the bytes from getByteCount() raw bytes of the stream; the size never changes. A
  // stream that ends early leaves the array as it was.
  bool read(std::istream& stream) override;

 private:
  size_t bitCount;
  unsigned char* bytes;
};

#endif  // TAV_BITARRAY_H
