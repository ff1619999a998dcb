/* tav_error.h - error ids, error records, exceptions and assertion reports.
 *
 * Every failure the library reports carries four coordinates: an error id (the constants below),
 * an error class, a severity and a recommended action. Functions that report through an
 * out-parameter fill a _TavStError; operations that cannot return an error throw a
 * TavClException or TavClExceptionFatal carrying all four. The mapping functions give the
 * message id under which the built-in message table holds each coordinate's display text.
 *
 * The C part of this header compiles as C; the exception classes are C++ only.
 */
#ifndef TAV_ERROR_H
#define TAV_ERROR_H

#include <stdint.h>
#include <stdio.h>

#include "tav_error_ids.h"
#include "tav_export.h"

/* Checked printf-style arguments and functions that do not return, where the compiler can be
 * told: GCC and clang through attributes (with MinGW the library formats with the C99 printf,
 * not Microsoft's, so the check is against the GNU formats), MSVC's noreturn through
 * __declspec. Any other compiler gets plain declarations. */
#if defined(__GNUC__) || defined(__clang__)
#if defined(__MINGW32__)
#define TAV_PRINTF_FORMAT(format_index, first_arg) \
  __attribute__((format(gnu_printf, format_index, first_arg)))
#else
#define TAV_PRINTF_FORMAT(format_index, first_arg) \
  __attribute__((format(printf, format_index, first_arg)))
#endif
#define TAV_NORETURN __attribute__((__noreturn__))
#elif defined(_MSC_VER)
#define TAV_PRINTF_FORMAT(format_index, first_arg)
#define TAV_NORETURN __declspec(noreturn)
#else
#define TAV_PRINTF_FORMAT(format_index, first_arg)
#define TAV_NORETURN
#endif

/* The error ids, as enumeration constants so that the header also compiles as C without unused
 * constants. windows.h defines NO_ERROR as a macro with the same value; when it is already
 * defined, that definition serves. */
#define TAV_DECLARE_ERROR_ID(name, value, message) name = value,
#ifndef NO_ERROR
enum { TAV_ERROR_ID_NO_ERROR(TAV_DECLARE_ERROR_ID) };
#endif
enum { TAV_ERROR_ID_LIST_AFTER_NO_ERROR(TAV_DECLARE_ERROR_ID) };
#undef TAV_DECLARE_ERROR_ID

#define TAV_DECLARE_ENUMERATOR(prefix, name, value) prefix##name = value,
#define TAV_CLASS_ENUMERATOR(name, value, message) TAV_DECLARE_ENUMERATOR(TAV_CLASS_, name, value)
#define TAV_SEVERITY_ENUMERATOR(name, value, message) \
  TAV_DECLARE_ENUMERATOR(TAV_SEVERITY_, name, value)
#define TAV_ACTION_ENUMERATOR(name, value, message) TAV_DECLARE_ENUMERATOR(TAV_ACTION_, name, value)

/* What kind of failure: TAV_CLASS_OUT_OF_MEMORY, TAV_CLASS_IO_NOT_EXISTENT, ... */
typedef enum TavEnErrorClass { TAV_ERROR_CLASS_LIST(TAV_CLASS_ENUMERATOR) } TavEnErrorClass;

/* How bad it is: TAV_SEVERITY_WARNING, TAV_SEVERITY_FATAL, ... */
typedef enum TavEnErrorSeverity {
  TAV_ERROR_SEVERITY_LIST(TAV_SEVERITY_ENUMERATOR)
} TavEnErrorSeverity;

/* What the caller is advised to do: TAV_ACTION_RETRY, TAV_ACTION_TERMINATE, ... */
typedef enum TavEnErrorAction { TAV_ERROR_ACTION_LIST(TAV_ACTION_ENUMERATOR) } TavEnErrorAction;

#undef TAV_CLASS_ENUMERATOR
#undef TAV_SEVERITY_ENUMERATOR
#undef TAV_ACTION_ENUMERATOR
#undef TAV_DECLARE_ENUMERATOR

/* The error record that functions fill through an out-parameter; id 0 (NO_ERROR) is success. */
typedef struct _TavStError {
  uint32_t id;
  TavEnErrorClass errorClass;
} _TavStError;

/* The same with severity and action, for callers that must be told all four coordinates. */
typedef struct _TavStUserError {
  uint32_t id;
  TavEnErrorClass errorClass;
  TavEnErrorSeverity severity;
  TavEnErrorAction action;
} _TavStUserError;

TAV_EXTERN_C_BEGIN

/* Message ids of the display texts; 0 for a value that is not in the tables. */
TAV_API unsigned long tavErrorGetIdAsMessageId(unsigned long id);
TAV_API unsigned long tavErrorGetClassAsMessageId(TavEnErrorClass errorClass);
TAV_API unsigned long tavErrorGetSeverityAsMessageId(TavEnErrorSeverity severity);
TAV_API unsigned long tavErrorGetActionAsMessageId(TavEnErrorAction action);

/* The symbolic name of a Windows system error code ("ERROR_FILE_NOT_FOUND" for 2), or null.
 * Codes are compared as signed 32-bit numbers, so 4294967288 is the LZ error -8. Works the same
 * on every platform. */
TAV_API const char* tavWinGetErrorAsString(unsigned long code);

/* Report a failed assertion on standard error (and, on Windows, in a message box unless
 * TAV_NO_ASSERT_POPUP is enabled), then end the process with abort(). */
TAV_API TAV_NORETURN void tav__assert(const char* expression, const char* file, unsigned long line);
TAV_API TAV_NORETURN void tav__assert_msg(const char* expression, const char* file,
                                          unsigned long line, const char* function,
                                          const char* message);

/* The report stream: where the library writes what it reports as it goes (tav_tprintf, and the
 * trace's verbose lines and file writer reports), standard output until a program chooses
 * another. tavSetReportStream makes stream the report stream (null means standard output again)
 * and returns the previous one, never null. The stream is one for the whole library and is
 * switched atomically, without a lock; the caller keeps the stream open while it is in use and
 * restores the previous one before closing it. */
TAV_API FILE* tavSetReportStream(FILE* stream);
TAV_API FILE* tavGetReportStream(void);

/* Debugging print: "[file:line] " and the formatted text on the report stream, a newline added
 * when the format has none, then a flush. Returns the result of the flush. */
TAV_API int tav_tprintf(const char* file, int line, const char* format, ...)
    TAV_PRINTF_FORMAT(3, 4);

TAV_EXTERN_C_END

#define TAV_ASSERT(expression) \
  ((expression) ? (void)0 : tav__assert(#expression, __FILE__, __LINE__))
#define TAV_ASSERT_MSG(expression, message) \
  ((expression) ? (void)0 : tav__assert_msg(#expression, __FILE__, __LINE__, __func__, (message)))

#ifdef __cplusplus

/* The root of the library's exceptions. It deliberately has no base class: a handler for the
 * standard exceptions does not catch the library's. Catch by reference. */
class TAV_API TavClExceptionABase {
 public:
  virtual ~TavClExceptionABase();
  virtual bool isTavException() const = 0;
  virtual const char* getCause() const;
};

/* An error the caller may handle and continue after. The exception does not own its texts:
 * cause and module point to text with static lifetime, and copies share them. */
class TAV_API TavClException : public TavClExceptionABase {
 public:
  TavClException(const char* cause, const char* module, uint32_t line, uint32_t id,
                 TavEnErrorClass errorClass, TavEnErrorSeverity severity, TavEnErrorAction action);
  TavClException(const TavClException&) = default;
  TavClException& operator=(const TavClException&) = default;
  ~TavClException() override;

  bool isTavException() const override;
  const char* getCause() const override;  // never null: empty when no cause was given

  const char* getModule() const { return module; }  // "file.cpp:123", or null
  uint32_t getLine() const { return line; }
  uint32_t getId() const { return id; }
  TavEnErrorClass getErrorClass() const { return errorClass; }
  TavEnErrorSeverity getSeverity() const { return severity; }
  TavEnErrorAction getAction() const { return action; }
  _TavStUserError getUserError() const { return {id, errorClass, severity, action}; }

 protected:
  const char* cause;
  const char* module;
  uint32_t line;
  uint32_t id;
  TavEnErrorClass errorClass;
  TavEnErrorSeverity severity;
  TavEnErrorAction action;
};

/* An error after which the caller is not expected to go on; its severity is always FATAL. */
class TAV_API TavClExceptionFatal : public TavClException {
 public:
  TavClExceptionFatal(unsigned long id, TavEnErrorClass errorClass, TavEnErrorAction action,
                      const char* cause);
  // The severity argument exists for symmetry with TavClException; the result is always FATAL.
  TavClExceptionFatal(const char* cause, const char* module, uint32_t line, uint32_t id,
                      TavEnErrorClass errorClass, TavEnErrorSeverity severity,
                      TavEnErrorAction action);
  TavClExceptionFatal(const TavClExceptionFatal&) = default;
  TavClExceptionFatal& operator=(const TavClExceptionFatal&) = default;
  ~TavClExceptionFatal() override;
};

namespace tav {
namespace detail {
// The part of a path after its last slash or backslash; evaluated at compile time for __FILE__.
constexpr const char* sourceBaseName(const char* path) {
  const char* base = path;
  for (const char* p = path; *p != '\0'; ++p) {
    if (*p == '/' || *p == '\\') base = p + 1;
  }
  return base;
}
}  // namespace detail
}  // namespace tav

#define TAV_STRINGIZE_DETAIL(x) #x
#define TAV_STRINGIZE(x) TAV_STRINGIZE_DETAIL(x)
/* "file.cpp:123" for the line where it is written. */
#define TAV_SOURCE_POSITION ::tav::detail::sourceBaseName(__FILE__ ":" TAV_STRINGIZE(__LINE__))

/* Throw sites name themselves: the exception records the source file and line of the throw. */
#define TAV_THROW(cause, id, errorClass, severity, action)                                     \
  throw TavClException((cause), TAV_SOURCE_POSITION, __LINE__, (id), (errorClass), (severity), \
                       (action))
#define TAV_THROW_FATAL(cause, id, errorClass, action)                                  \
  throw TavClExceptionFatal((cause), TAV_SOURCE_POSITION, __LINE__, (id), (errorClass), \
                            TAV_SEVERITY_FATAL, (action))

#endif /* __cplusplus */

#endif /* TAV_ERROR_H */
