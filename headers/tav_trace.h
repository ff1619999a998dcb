/* tav_trace.h - the trace functions and the process-wide trace instance.
 *
 * A program creates the trace instance once with its key (see tav_trace_environment.h for the
 * variables the key names), before it starts threads that trace, and deletes it after they end
 * (it is also deleted at process exit, which writes what the buffer still holds to the trace
 * file when autosave is on). A trace point tests the enabled instance first, so that it costs
 * one pointer test while tracing is off:
 *
 *   if (TAV_TRACE_IS_ENABLED())
 *     tavTraceDump(TAV_TRACE_DETAIL_MED, 3, TAV_TRACE_TYPE_INT32, "Parser::next", "token",
 *                  &token, sizeof token);
 *
 * tavTraceDump and tavTraceFlush do not test it themselves: calling them while tracing is not
 * enabled is a programming error.
 *
 * The C part of this header compiles as C.
 */
#ifndef TAV_TRACE_H
#define TAV_TRACE_H

#include <stdbool.h>
#include <stdint.h>

#include "tav_export.h"
#include "tav_trace_entry.h"

/* A back end for trace calls: receives every record the program makes, with the context it was
 * registered with. Function entry and exit arrive with an empty message and the nesting level
 * (4 bytes) as data. */
typedef void (*TavPfuTraceDump)(void* context, TavEnTraceDetail detail, uint16_t componentId,
                                TavEnTraceDataType type, const char* origin, const char* message,
                                const void* data, uint64_t size);

#ifdef __cplusplus
class TavClTraceInstance;
extern "C" {
/* The enabled trace instance, or null while tracing is not enabled. */
extern TAV_API TavClTraceInstance* gs_pclTavTraceInstance;
}
#else
struct TavClTraceInstance;
extern TAV_API struct TavClTraceInstance* gs_pclTavTraceInstance;
#endif

#define TAV_TRACE_IS_ENABLED() (gs_pclTavTraceInstance != 0)

TAV_EXTERN_C_BEGIN

/* Creates the trace instance for key; a null instance name means the default one. Later calls
 * keep the first instance, whatever their key. */
TAV_API void tavTraceCreateInstance(const char* key, const char* instanceName);
/* Deletes the trace instance, writing out its buffer when autosave is on. */
TAV_API void tavTraceDeleteInstance(void);
/* Records one trace call. Function entry and exit ignore message and data and record the
 * nesting level instead; every other type goes to the instance's back end. Only while
 * TAV_TRACE_IS_ENABLED(). */
TAV_API void tavTraceDump(TavEnTraceDetail detail, uint16_t componentId, TavEnTraceDataType type,
                          const char* origin, const char* message, const void* data, uint64_t size);
/* Hands the buffer to the trace file. Only while TAV_TRACE_IS_ENABLED(). */
TAV_API void tavTraceFlush(void);
TAV_API bool tavTraceIsEnabled(void);
/* The enabled instance, or null. */
TAV_API void* TavClTraceInstance_getInstance(void);

TAV_EXTERN_C_END

#ifdef __cplusplus

#include <atomic>

#include "tav_memmgr.h"
#include "tav_trace_environment.h"

class TAV_API TavClTraceInstance : public TavClMemoryManagedObject {
 public:
  /* The instance, created on the first call with key and instance name (null for the default
   * instance). It starts enabled when its environment is active. Later calls return the first
   * instance unchanged. Running out of memory throws the memory manager's exception. */
  static TavClTraceInstance* createInstance(const char* key, const char* instanceName = nullptr);
  /* The same for a tool that watches the trace: it never clears the trace file. */
  static TavClTraceInstance* createControllerInstance(const char* key,
                                                      const char* instanceName = nullptr);
  /* Disables and destroys the instance, if any. Also runs at process exit. */
  static void deleteInstance();
  /* The instance created, enabled or not; null when there is none. */
  static TavClTraceInstance* getCreatedInstance() { return cv_pclSingletonInstance; }

  /* Marks the environment active; it cannot be made inactive again. */
  void activate() { environment->activate(); }
  /* Makes this the enabled instance, if its environment is active. */
  void enable();
  /* Flushes, then no instance is enabled. */
  void disable();
  bool isActive() const { return environment->isActive(); }
  static bool isEnabled() { return gs_pclTavTraceInstance != nullptr; }
  void flush();

  /* Routes every trace call to callback with context instead of the trace buffer. */
  void registerUserCallback(TavPfuTraceDump callback, void* context);
  bool usesTavBackEnd() const { return dumpCallback == &dumpImp; }

  /* Function entry (type 1) or exit (any other type): changes the nesting level and passes
   * the level after the change to the back end. Detail LOW is passed on as OFF, so that entry
   * and exit are recorded whenever tracing is. */
  void dumpFunction(TavEnTraceDetail detail, uint16_t componentId, TavEnTraceDataType type,
                    const char* origin);
  /* Any other record: straight to the back end (the built-in one called directly). */
  void dump(TavEnTraceDetail detail, uint16_t componentId, TavEnTraceDataType type,
            const char* origin, const char* message, const void* data, uint64_t size) {
    if (dumpCallback == &dumpImp) {
      dumpImp(callbackContext, detail, componentId, type, origin, message, data, size);
    } else {
      dumpCallback(callbackContext, detail, componentId, type, origin, message, data, size);
    }
  }

  /* Entries minus exits so far, wrapping below zero. Shared by all threads. */
  uint32_t getNestingLevel() const { return nestingLevel.load(std::memory_order_relaxed); }
  TavClTraceEnvironment& getEnvironment() { return *environment; }

  TavClTraceInstance(const TavClTraceInstance&) = delete;
  TavClTraceInstance& operator=(const TavClTraceInstance&) = delete;

 private:
  TavClTraceInstance(const char* key, const char* instanceName, bool controller);
  ~TavClTraceInstance();
  static TavClTraceInstance* create(const char* key, const char* instanceName, bool controller);
  /* The built-in back end: filters by detail and component id, then writes into the buffer. */
  static void dumpImp(void* context, TavEnTraceDetail detail, uint16_t componentId,
                      TavEnTraceDataType type, const char* origin, const char* message,
                      const void* data, uint64_t size);

  static TavClTraceInstance* cv_pclSingletonInstance;

  [[maybe_unused]] uint32_t reserved[2] = {0, 0};
  TavClTraceEnvironment* environment = nullptr;
  /* The environment's settings block, which every record consults: kept here so that a record
   * reaches it in one step rather than through the environment and its settings. */
  const _TavStTraceSettingsBlock* settingsBlock = nullptr;
  TavPfuTraceDump dumpCallback;
  void* callbackContext;
  /* Atomic so that threads tracing at once never race on it; the level they see is still the
   * shared count of all threads. */
  std::atomic<uint32_t> nestingLevel{0};
};

#endif /* __cplusplus */

#endif /* TAV_TRACE_H */
