/* tav_memmgr.h - the one replaceable allocator of the library.
 *
 * All heap memory the library takes for its own objects comes from a process-wide triple of
 * functions (allocate, reallocate, release). An application may install its own triple with
 * tavSetNewMemoryManager before it uses the library. Allocation never returns null: a failure
 * throws TavClExceptionFatal (severity FATAL, action TERMINATE) with one of the MEMMGR_ ids.
 *
 * The C functions are callable from C, but C callers cannot catch the exception: they must
 * install an allocator that does not fail, or end the process from within it.
 */
#ifndef TAV_MEMMGR_H
#define TAV_MEMMGR_H

#include <stddef.h>

#include "tav_error.h"
#include "tav_export.h"

typedef void* (*TavPfuAllocator)(size_t size);
typedef void* (*TavPfuReallocator)(void* block, size_t size);
typedef void (*TavPfuDeallocator)(void* block);

TAV_EXTERN_C_BEGIN

/* A block of at least `size` bytes from the installed allocator. */
TAV_API void* tavMalloc(size_t size);
/* A zero-filled block of count * size bytes. A product that does not fit in size_t is reported
 * as out of memory, never wrapped into a short block. */
TAV_API void* tavCalloc(size_t count, size_t size);
/* Resizes a block. Resizing to 0 bytes releases the block and then throws
 * MEMMGR_ZERO_SIZE_OBJECT: zero-size objects are a programming error. Without an installed
 * reallocator it throws MEMMGR_NO_USER_REALLOC_FUNC. */
TAV_API void* tavRealloc(void* block, size_t size);
/* Releases a block; null is ignored. */
TAV_API void tavFree(void* block);
/* Installs a new allocator triple. Call it before any block is allocated and before other
 * threads use the library; a block must be released by the triple that allocated it. A null
 * reallocator leaves reallocation unsupported, except when the allocator is the C runtime's
 * malloc, which brings the runtime's realloc along. */
TAV_API void tavSetNewMemoryManager(TavPfuAllocator allocator, TavPfuReallocator reallocator,
                                    TavPfuDeallocator deallocator);

TAV_EXTERN_C_END

#ifdef __cplusplus

/* The holder of the allocator triple; it has static members only. */
class TAV_API TavClMemoryManager {
 public:
  TavClMemoryManager() = delete;

  static void setNewMemoryManager(TavPfuAllocator allocator, TavPfuReallocator reallocator,
                                  TavPfuDeallocator deallocator);
  /* True unless the installed allocator is the C runtime's malloc itself. The library's default
   * allocator is a stub that calls malloc, so this is true until a caller installs malloc. */
  static bool hasUserDefinedMgr();

  static void* malloc(size_t size);
  static void* calloc(size_t count, size_t size);
  static void* realloc(void* block, size_t size);
  static void free(void* block);

 private:
  TAV_NORETURN static void outOfMemory(const char* location, int line, size_t size);

  static TavPfuAllocator cv_pfuAllocatorCallback;
  static TavPfuReallocator cv_pfuReallocatorCallback;
  static TavPfuDeallocator cv_pfuDeallocatorCallback;
};

/* A base for library classes whose objects live on the heap: new and delete go through the
 * installed allocator, so a failing allocation throws the memory manager's exception. */
class TAV_API TavClMemoryManagedObject {
 public:
  static void* operator new(size_t size) { return tavMalloc(size); }
  static void* operator new[](size_t size) { return tavMalloc(size); }
  static void operator delete(void* block) { tavFree(block); }
  static void operator delete[](void* block) { tavFree(block); }
};

#endif /* __cplusplus */

#endif /* TAV_MEMMGR_H */
