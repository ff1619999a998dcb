// tav_mempool.h - a region allocator for many small objects with a common lifetime.
//
// TavClMemoryPool hands out chunks by advancing a pointer through large blocks. Single chunks are
// never freed: memory comes back wholesale, either everything after a saved position (deleteAt)
// or everything (deleteAll). Blocks are chained, and a new block is appended when the last one is
// full. A pool may instead run inside one piece of memory supplied by the caller; such a pool
// never grows and answers a request it cannot satisfy with null.
//
// When growing fails, the pool calls the error handler installed with setErrorHandler (and
// returns null), or without one throws TavClException with MEMORYPOOL_COULD_NOT_GROW.
//
// A pool belongs to one thread at a time.

#ifndef TAV_MEMPOOL_H
#define TAV_MEMPOOL_H

#include <stddef.h>
#include <stdint.h>

#include <new>
#include <utility>

#include "tav_error.h"
#include "tav_export.h"
#include "tav_memmgr.h"

// Called when a pool cannot grow: error.id is MEMORYPOOL_COULD_NOT_GROW, error.errorClass the
// class of the allocator's failure (TAV_CLASS_OUT_OF_MEMORY); context is the caller's pointer.
typedef void (*TavPfuMemoryPoolErrorHandler)(const _TavStError& error, void* context);

// The header at the start of every block; the usable bytes follow it directly. (A pool on caller
// memory allocates its one header separately and points it into the caller's memory.)
class TAV_API TavClMemoryPoolBlock {
 public:
  static constexpr size_t kHeaderSize = 48;

  // Makes position the next free byte.
  void reset(void* position) { next = static_cast<char*>(position); }

  // Bytes from next to end. Computed on the addresses, so that an empty region (end just before
  // begin) needs no pointer outside any object.
  size_t getFreeSize() const {
    return static_cast<size_t>(reinterpret_cast<uintptr_t>(end) + 1 -
                               reinterpret_cast<uintptr_t>(next));
  }
  size_t getCapacity() const {
    return static_cast<size_t>(reinterpret_cast<uintptr_t>(end) + 1 -
                               reinterpret_cast<uintptr_t>(begin));
  }

  char* begin;                      // first usable byte
  char* end;                        // last usable byte (inclusive)
  char* next;                       // next free byte
  TavClMemoryPoolBlock* nextBlock;  // the following block, or null
  uint32_t allocationCount;         // chunks handed out since the block was last reset
  size_t blockNumber;               // 1 for the first block, then the block count when appended
};

static_assert(sizeof(void*) != 8 ||
                  sizeof(TavClMemoryPoolBlock) == TavClMemoryPoolBlock::kHeaderSize,
              "a block header is 48 bytes on 64-bit platforms");

class TAV_API TavClMemoryPool : public TavClMemoryManagedObject {
 public:
  // A pool of its own blocks. minimumRemainder is clamped to 256..65536; both block sizes are
  // raised to at least 4096 and rounded up to a multiple of 4096. The first block is allocated
  // at once; if that fails, the memory manager's TavClExceptionFatal reaches the caller.
  TavClMemoryPool(size_t firstBlockSize, size_t subsequentBlockSize, size_t minimumRemainder);
  // A pool inside the caller's size bytes at memory, which must outlive the pool and which the
  // pool never releases. It never grows. A null memory pointer gives a pool without room.
  TavClMemoryPool(void* memory, size_t size);
  ~TavClMemoryPool();
  TavClMemoryPool(const TavClMemoryPool&) = delete;
  TavClMemoryPool& operator=(const TavClMemoryPool&) = delete;

  // A chunk of at least size bytes (rounded up to a multiple of 8), aligned to 8 in a pool of
  // its own blocks; blockNumber receives the number of the block that served it. Null when a
  // pool on caller memory is full, or when growing failed and an error handler was called.
  void* allocate(size_t size, size_t& blockNumber) {
    const size_t chunkSize = getAlignedSizeFor(size);
    TavClMemoryPoolBlock* block = currentBlock;
    if (chunkSize <= block->getFreeSize()) return takeChunk(block, chunkSize, blockNumber);
    return allocate(chunkSize, blockNumber, block);
  }
  void* allocate(size_t size) {
    size_t blockNumber;
    return allocate(size, blockNumber);
  }

  // Builds a T in the pool, or returns null as allocate does. The pool releases memory without
  // running destructors: destroy objects that own resources before deleteAt or deleteAll. When
  // the constructor throws, the chunk stays taken until the next deleteAt or deleteAll.
  template <typename T, typename... Arguments>
  T* construct(Arguments&&... arguments) {
    static_assert(alignof(T) <= 8, "the pool aligns chunks to 8 bytes at most");
    void* chunk = allocateAligned(sizeof(T), alignof(T));
    return chunk == nullptr ? nullptr : ::new (chunk) T(std::forward<Arguments>(arguments)...);
  }

  // Releases every chunk at or after position, a handle from getCurrentStateHandle (or a chunk
  // pointer): the block holding it is cut back to it and every later block is emptied. A
  // position in no block of the pool changes nothing.
  void deleteAt(void* position);
  // Releases every chunk. Later blocks that served nothing since the previous deleteAll are
  // released; the others are kept, emptied, for the next cycle. So two calls in a row without
  // allocations between them leave only the first block.
  void deleteAll();

  // size rounded up to a multiple of 8, as every chunk is.
  size_t getAlignedSizeFor(size_t size) const {
    if (!alignChunks || size % 8 == 0) return size;
    constexpr size_t kLargestMultiple = ~static_cast<size_t>(7);
    return size > kLargestMultiple ? kLargestMultiple : (size + 7) & kLargestMultiple;
  }
  size_t getCurrentFreeSize() const;
  // The larger of the first block's free size and the capacity of a grown block.
  size_t getLargestPossibleChunk() const;
  // Usable bytes of a grown block; 0 for a pool that does not grow.
  size_t getCapacityForSubsequentBlocks() const;
  size_t getCapacityForFirstBlock() const;
  // The next free byte of the current block, to hand to deleteAt later.
  void* getCurrentStateHandle() const;
  size_t getFirstBlockNumber() const { return 1; }
  size_t getBlockCount() const { return blockCount; }
  // Running total of block sizes in KiB. Growth adds a block's size with its header, release
  // takes away its capacity without the header, so the figure may drift upwards.
  size_t getCapacityKB() const { return capacityKB; }
  size_t getMinimumRemainder() const { return minimumRemainder; }
  bool isUsingCallerMemory() const { return usesCallerMemory; }

  // The handler called when growing fails; null restores throwing.
  void setErrorHandler(TavPfuMemoryPoolErrorHandler handler, void* context);

 private:
  static void* takeChunk(TavClMemoryPoolBlock* block, size_t chunkSize, size_t& blockNumber) {
    char* chunk = block->next;
    block->next += chunkSize;
    ++block->allocationCount;
    blockNumber = block->blockNumber;
    return chunk;
  }
  // Serves an already rounded chunk size from block on, appending a block when all are full.
  void* allocate(size_t chunkSize, size_t& blockNumber, TavClMemoryPoolBlock* block);
  void* appendBlockFor(size_t chunkSize, size_t& blockNumber, TavClMemoryPoolBlock* last);
  void* reportGrowthFailure(const TavClExceptionFatal& failure);
  void* allocateAligned(size_t size, size_t alignment);
  size_t alignToPageSize(size_t size) const;

  TavClMemoryPoolBlock* firstBlock;
  TavClMemoryPoolBlock* currentBlock;
  size_t blockCount;
  size_t capacityKB;
  size_t subsequentBlockSize;  // header included; 0 for a pool that must not grow
  size_t minimumRemainder;
  bool alignChunks;
  bool usesCallerMemory;
  TavPfuMemoryPoolErrorHandler errorHandler;
  void* errorHandlerContext;
};

#endif  // TAV_MEMPOOL_H
