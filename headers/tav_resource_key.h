// tav_resource_key.h - names of shared resources, and the lock that guards the trace buffer.
//
// A resource key is a name built from two or three parts joined by ":", with every character
// mapped into a small alphabet (letters, digits, "_", "-", "@") that any platform accepts in the
// name of a semaphore or a piece of shared memory. The semaphore key names the lock that the trace
// buffer takes around each record and each flush; within one process that lock is the key object's
// own process lock, so everything that shares one key object is serialised.

#ifndef TAV_RESOURCE_KEY_H
#define TAV_RESOURCE_KEY_H

#include <stddef.h>
#include <stdint.h>

#include "tav_export.h"
#include "tav_trace_lock.h"

class TAV_API TavClResourceKeyABase {
 public:
  static constexpr size_t kKeyCapacity = 256;  // bytes of key text, its terminating zero included

  TavClResourceKeyABase(const TavClResourceKeyABase& other);
  // Copies the text and its length, and points the second part into this object's own text.
  TavClResourceKeyABase& operator=(const TavClResourceKeyABase& other);
  virtual ~TavClResourceKeyABase();

  // Appends one part, after a ":" unless the key is still empty. A backslash becomes ":"; any
  // other character that is not a letter, digit, "_", "-" or "@" is replaced by the character
  // at its byte value modulo 64 in "a-zA-Z0-9_-", so "." becomes "U" and a blank "G". Text beyond
  // kKeyCapacity - 1 characters is cut. A null part counts as empty.
  void add(const char* part);
  // Whether text begins with the whole key text. Null never matches.
  bool matches(const char* text) const;

  const char* getKey() const { return keyText; }
  uint64_t getLength() const { return length; }
  // The key from its second part on (the user's key and whatever followed it).
  const char* getSecondPart() const { return secondPart; }

 protected:
  // Builds first:second, or first:second:third when a third part is given (not null).
  TavClResourceKeyABase(const char* firstPart, const char* secondPartText,
                        const char* thirdPart = nullptr);

 private:
  char keyText[kKeyCapacity];
  uint64_t length;
  const char* secondPart;
};

// The key of the semaphore that guards a trace buffer: "SEM32:" key ":" instance.
class TAV_API TavClResourceKeySemaphore : public TavClResourceKeyABase {
 public:
  TavClResourceKeySemaphore(const char* key, const char* instance);
  // A copy names the same resource but has a lock of its own.
  TavClResourceKeySemaphore(const TavClResourceKeySemaphore& other);
  TavClResourceKeySemaphore& operator=(const TavClResourceKeySemaphore& other);
  ~TavClResourceKeySemaphore() override;

  // The lock of this key within the process.
  TavClTraceProcessLock& getLock() { return access; }

 private:
  TavClTraceProcessLock access;
};

// Holds the lock of a semaphore key for the lifetime of the object. Records and flushes of a
// trace buffer run inside one, so records from concurrent threads never interleave.
class TAV_API TavClTraceBufferAccessSemaphore {
 public:
  explicit TavClTraceBufferAccessSemaphore(TavClResourceKeySemaphore& key) : key(key) {
    key.getLock().lock();
  }
  ~TavClTraceBufferAccessSemaphore() { key.getLock().unlock(); }
  TavClTraceBufferAccessSemaphore(const TavClTraceBufferAccessSemaphore&) = delete;
  TavClTraceBufferAccessSemaphore& operator=(const TavClTraceBufferAccessSemaphore&) = delete;

 private:
  TavClResourceKeySemaphore& key;
};

#endif  // TAV_RESOURCE_KEY_H
