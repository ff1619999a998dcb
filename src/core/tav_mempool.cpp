// tav_mempool.cpp - the block chain behind TavClMemoryPool: growth, release and the size rules.
//
// The fast path (a chunk from the current block) is inline in the header. This file walks the
// chain when the current block is too full, appends blocks, and reports a failed growth.

#include "tav_mempool.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

constexpr size_t kHeaderSize = TavClMemoryPoolBlock::kHeaderSize;
constexpr size_t kPageSize = 4096;
constexpr size_t kSmallestRemainder = 256;
constexpr size_t kLargestRemainder = 0x10000;

// A failed growth is reported as thrown from this fixed position, whatever line the throw has in
// this file: programs that log the position compare against it. The line number and the
// "file:line" text come from one literal.
struct FixedPosition {
  const char* site;
  uint32_t line;
};
#define TAV_MEMPOOL_POSITION(number) \
  { "tav_mempool.cpp:" #number, number }
constexpr FixedPosition kGrowthFailure = TAV_MEMPOOL_POSITION(296);
#undef TAV_MEMPOOL_POSITION

bool contains(const TavClMemoryPoolBlock* block, const void* position) {
  // The position just past a full block belongs to it too.
  const uintptr_t address = reinterpret_cast<uintptr_t>(position);
  return address >= reinterpret_cast<uintptr_t>(block->begin) &&
         address <= reinterpret_cast<uintptr_t>(block->end) + 1;
}

void empty(TavClMemoryPoolBlock* block) {
  block->reset(block->begin);
  block->allocationCount = 0;
}

// Lays out a header at the start of a fresh block of blockSize bytes.
TavClMemoryPoolBlock* initBlock(void* memory, size_t blockSize, size_t blockNumber) {
  auto* block = static_cast<TavClMemoryPoolBlock*>(memory);
  block->begin = static_cast<char*>(memory) + kHeaderSize;
  block->end = block->begin + (blockSize - kHeaderSize) - 1;
  block->next = block->begin;
  block->nextBlock = nullptr;
  block->allocationCount = 0;
  block->blockNumber = blockNumber;
  return block;
}

}  // namespace

TavClMemoryPool::TavClMemoryPool(size_t firstBlockSize, size_t subsequentBlockSize,
                                 size_t minimumRemainder)
    : firstBlock(nullptr),
      currentBlock(nullptr),
      blockCount(0),
      capacityKB(0),
      subsequentBlockSize(alignToPageSize(std::max(subsequentBlockSize, kPageSize))),
      minimumRemainder(std::clamp(minimumRemainder, kSmallestRemainder, kLargestRemainder)),
      alignChunks(true),
      usesCallerMemory(false),
      errorHandler(nullptr),
      errorHandlerContext(nullptr) {
  const size_t firstSize = alignToPageSize(std::max(firstBlockSize, kPageSize));
  firstBlock = initBlock(tavMalloc(firstSize), firstSize, 1);
  currentBlock = firstBlock;
  blockCount = 1;
  capacityKB = firstSize / 1024;
}

TavClMemoryPool::TavClMemoryPool(void* memory, size_t size)
    : firstBlock(nullptr),
      currentBlock(nullptr),
      blockCount(0),
      capacityKB(0),
      subsequentBlockSize(0),
      minimumRemainder(kSmallestRemainder),
      alignChunks(true),
      usesCallerMemory(true),
      errorHandler(nullptr),
      errorHandlerContext(nullptr) {
  if (memory == nullptr) size = 0;
  auto* header = static_cast<TavClMemoryPoolBlock*>(tavMalloc(kHeaderSize));
  header->begin = static_cast<char*>(memory);
  // For an empty region end lies just before begin; computed on the address, since there is no
  // such byte to point into.
  header->end = reinterpret_cast<char*>(reinterpret_cast<uintptr_t>(memory) + size - 1);
  header->next = header->begin;
  header->nextBlock = nullptr;
  header->allocationCount = 0;
  header->blockNumber = 1;
  firstBlock = header;
  currentBlock = header;
  blockCount = 1;
  capacityKB = size / 1024;
}

TavClMemoryPool::~TavClMemoryPool() {
  // On caller memory the one header is the only block of the pool's own.
  TavClMemoryPoolBlock* block = firstBlock;
  while (block != nullptr) {
    TavClMemoryPoolBlock* following = block->nextBlock;
    tavFree(block);
    block = following;
  }
  firstBlock = nullptr;
  currentBlock = nullptr;
  errorHandler = nullptr;
  errorHandlerContext = nullptr;
}

void* TavClMemoryPool::allocate(size_t chunkSize, size_t& blockNumber,
                                TavClMemoryPoolBlock* block) {
  // Every block passed over on the way to the one that serves the chunk stops being a candidate
  // once its free size has fallen below the minimum remainder: allocation then starts behind
  // the earliest such block. The walk is a loop rather than a recursion over the chain, whose
  // length the caller controls.
  TavClMemoryPoolBlock* firstStarved = nullptr;
  void* chunk = nullptr;
  for (;; block = block->nextBlock) {
    if (chunkSize <= block->getFreeSize()) {
      chunk = takeChunk(block, chunkSize, blockNumber);
      break;
    }
    if (block->nextBlock == nullptr) {
      if (subsequentBlockSize == 0) break;  // a pool that must not grow: null, silently
      chunk = appendBlockFor(chunkSize, blockNumber, block);
      // The last block hands over to the new one only if one was appended.
      if (chunk != nullptr && firstStarved == nullptr && block->getFreeSize() < minimumRemainder) {
        firstStarved = block;
      }
      break;
    }
    if (firstStarved == nullptr && block->getFreeSize() < minimumRemainder) firstStarved = block;
  }
  if (firstStarved != nullptr) currentBlock = firstStarved->nextBlock;
  return chunk;
}

void* TavClMemoryPool::appendBlockFor(size_t chunkSize, size_t& blockNumber,
                                      TavClMemoryPoolBlock* last) {
  size_t blockSize = subsequentBlockSize;
  if (chunkSize > blockSize - kHeaderSize) {
    // An oversized chunk gets a block of its own. A size that cannot be expressed cannot be
    // allocated either, and is reported as the allocator would report it.
    const size_t largestBlock = alignChunks
                                    ? std::numeric_limits<size_t>::max() / kPageSize * kPageSize
                                    : std::numeric_limits<size_t>::max();
    if (chunkSize > largestBlock - kHeaderSize) {
      return reportGrowthFailure(TavClExceptionFatal("", nullptr, 0, MEMMGR_USER_OUT_OF_MEMORY,
                                                     TAV_CLASS_OUT_OF_MEMORY, TAV_SEVERITY_FATAL,
                                                     TAV_ACTION_TERMINATE));
    }
    blockSize = chunkSize + kHeaderSize;
    if (alignChunks) blockSize = alignToPageSize(blockSize);
  }

  void* memory;
  try {
    memory = tavMalloc(blockSize);
  } catch (const TavClExceptionFatal& failure) {
    return reportGrowthFailure(failure);
  }
  capacityKB += blockSize / 1024;
  ++blockCount;
  TavClMemoryPoolBlock* block = initBlock(memory, blockSize, blockCount);
  last->nextBlock = block;
  return takeChunk(block, chunkSize, blockNumber);
}

void* TavClMemoryPool::reportGrowthFailure(const TavClExceptionFatal& failure) {
  if (errorHandler != nullptr) {
    const _TavStError error = {MEMORYPOOL_COULD_NOT_GROW, failure.getErrorClass()};
    errorHandler(error, errorHandlerContext);
    return nullptr;
  }
  // Thrown on as the plain exception: the caller of the pool may handle it and go on.
  throw TavClException(failure.getCause(), kGrowthFailure.site, kGrowthFailure.line,
                       MEMORYPOOL_COULD_NOT_GROW, failure.getErrorClass(), failure.getSeverity(),
                       failure.getAction());
}

void* TavClMemoryPool::allocateAligned(size_t size, size_t alignment) {
  // Chunks of a pool of its own blocks all start at multiples of 8. Only caller memory may be
  // misaligned, and it is a single block, so the padding needed at its next free byte is all
  // the padding the chunk can need.
  const uintptr_t next = reinterpret_cast<uintptr_t>(currentBlock->next);
  const size_t padding = static_cast<size_t>((alignment - next % alignment) % alignment);
  if (size > std::numeric_limits<size_t>::max() - padding) return nullptr;
  char* chunk = static_cast<char*>(allocate(size + padding));
  return chunk == nullptr ? nullptr : chunk + padding;
}

void TavClMemoryPool::deleteAt(void* position) {
  TavClMemoryPoolBlock* found = firstBlock;
  while (found != nullptr && !contains(found, position)) found = found->nextBlock;
  if (found == nullptr) return;
  for (TavClMemoryPoolBlock* block = found->nextBlock; block != nullptr; block = block->nextBlock) {
    empty(block);
  }
  found->reset(position);
}

void TavClMemoryPool::deleteAll() {
  // A later block that served nothing in the cycle just ended is released; one that was used is
  // kept for the next cycle. The pool thus shrinks only after a cycle of low demand.
  TavClMemoryPoolBlock* kept = firstBlock;
  while (TavClMemoryPoolBlock* block = kept->nextBlock) {
    if (block->allocationCount == 0) {
      kept->nextBlock = block->nextBlock;
      --blockCount;
      capacityKB -= block->getCapacity() / 1024;
      tavFree(block);
    } else {
      empty(block);
      kept = block;
    }
  }
  currentBlock = firstBlock;
  empty(firstBlock);
}

size_t TavClMemoryPool::getCurrentFreeSize() const {
  return currentBlock != nullptr ? currentBlock->getFreeSize() : 0;
}

size_t TavClMemoryPool::getLargestPossibleChunk() const {
  if (firstBlock == nullptr) return 0;
  return std::max(firstBlock->getFreeSize(), getCapacityForSubsequentBlocks());
}

size_t TavClMemoryPool::getCapacityForSubsequentBlocks() const {
  return subsequentBlockSize != 0 ? subsequentBlockSize - kHeaderSize : 0;
}

size_t TavClMemoryPool::getCapacityForFirstBlock() const {
  return firstBlock != nullptr ? firstBlock->getCapacity() : 0;
}

void* TavClMemoryPool::getCurrentStateHandle() const {
  return currentBlock != nullptr ? currentBlock->next : nullptr;
}

void TavClMemoryPool::setErrorHandler(TavPfuMemoryPoolErrorHandler handler, void* context) {
  errorHandler = handler;
  errorHandlerContext = context;
}

size_t TavClMemoryPool::alignToPageSize(size_t size) const {
  if (size % kPageSize == 0) return size;
  constexpr size_t kLargestMultiple = std::numeric_limits<size_t>::max() / kPageSize * kPageSize;
  return size > kLargestMultiple ? kLargestMultiple : (size / kPageSize + 1) * kPageSize;
}
