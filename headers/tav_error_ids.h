/* tav_error_ids.h - the error ids, error classes, severities and actions of the library.
 *
 * Each list below is the single place where a value, its name and the id of its message in the
 * built-in message table are written down. The constants and enumerations of tav_error.h, the
 * mapping functions and the message texts are all expanded from these lists, so they cannot
 * drift apart. Each entry is X(name, value, message id).
 */
#ifndef TAV_ERROR_IDS_H
#define TAV_ERROR_IDS_H

/* NO_ERROR comes first and is kept apart from the others only because windows.h defines a
 * macro of that name; see tav_error.h. */
#define TAV_ERROR_ID_NO_ERROR(X) X(NO_ERROR, 0, 47)

#define TAV_ERROR_ID_LIST_AFTER_NO_ERROR(X)    \
  X(CONUI_USAGE, 201, 48)                      \
  X(CONUI_ARG_MISSING, 202, 49)                \
  X(CONUI_ARG_EXPECTING_VALUE, 203, 50)        \
  X(CONUI_ARG_VALUE_TYPE_MISMATCH, 204, 51)    \
  X(CONUI_MSGCAT_CORRUPTED, 205, 52)           \
  X(INIFILE_INVAL_SECTION, 1000001, 53)        \
  X(INIFILE_INVAL_OPTION, 1000002, 54)         \
  X(INIFILE_INVAL_WHITESPACE, 1000003, 55)     \
  X(INIFILE_LINE_TOO_LONG, 1000004, 200)       \
  X(DIRECTORY_EXPANSION_FAILED, 1000101, 56)   \
  X(DIRECTORY_COULD_NOT_CHANGE, 1000102, 57)   \
  X(DIRECTORY_COULD_NOT_CREATE, 1000103, 58)   \
  X(DIRECTORY_COULD_NOT_REMOVE, 1000104, 59)   \
  X(DIRECTORY_COULD_NOT_DETACH, 1000105, 60)   \
  X(PROCESS_COULD_NOT_KILL, 1000201, 61)       \
  X(PROCESS_COULD_NOT_LAUNCH, 1000202, 62)     \
  X(THREAD_COULD_NOT_KILL, 1000301, 63)        \
  X(THREAD_COULD_NOT_LAUNCH, 1000302, 64)      \
  X(THREAD_COULD_NOT_SUSPEND, 1000303, 65)     \
  X(THREAD_COULD_NOT_RESUME, 1000304, 66)      \
  X(FILE_COULD_NOT_COPY, 1000401, 67)          \
  X(FILE_COULD_NOT_REMOVE, 1000402, 68)        \
  X(FILE_COULD_NOT_COPY_SELF, 1000403, 69)     \
  X(FILE_COULD_NOT_RENAME, 1000404, 70)        \
  X(DIRWALK_COULD_NOT_INIT, 1000601, 71)       \
  X(DIRWALK_NO_CONTINUATION, 1000602, 72)      \
  X(TRACEFORMAT_COULD_NOT_OPEN, 1000701, 73)   \
  X(TRACEFORMAT_UNEXPECTED_EOF, 1000702, 74)   \
  X(TRACEFORMAT_FILE_CORRUPTED, 1000703, 75)   \
  X(MEMORYPOOL_COULD_NOT_GROW, 1000801, 76)    \
  X(MEMORYPOOL_CHUNK_TOO_BIG, 1000802, 77)     \
  X(CPCONVERTER_UNSUPPORTED, 1000901, 78)      \
  X(CPCONVERTER_INVALID_SEQ, 1000902, 79)      \
  X(CPCONVERTER_TOO_BIG, 1000903, 80)          \
  X(CPCONVERTER_INCOMPLETE, 1000904, 81)       \
  X(CPCONVERTER_BAD_DESCR, 1000905, 82)        \
  X(CPCONVERTER_NO_TMP_BUFFER, 1000906, 83)    \
  X(MEMMGR_USER_OUT_OF_MEMORY, 1001001, 84)    \
  X(MEMMGR_RUNTIME_OUT_OF_MEMORY, 1001002, 85) \
  X(MEMMGR_NO_USER_REALLOC_FUNC, 1001003, 86)  \
  X(MEMMGR_ZERO_SIZE_OBJECT, 1001004, 87)      \
  X(ICU_UNEXPECTED_ICU_ERROR, 1001101, 88)     \
  X(ICU_ILLEGAL_ARGUMENT_ERROR, 1001102, 89)   \
  X(ICU_MISSING_RESOURCE_ERROR, 1001103, 90)   \
  X(ICU_INVALID_FORMAT_ERROR, 1001104, 91)     \
  X(ICU_FILE_ACCESS_ERROR, 1001105, 92)        \
  X(ICU_INTERNAL_PROGRAM_ERROR, 1001106, 93)   \
  X(ICU_MESSAGE_PARSE_ERROR, 1001107, 94)      \
  X(ICU_MEMORY_ALLOCATION_ERROR, 1001108, 95)  \
  X(ICU_INDEX_OUTOFBOUNDS_ERROR, 1001109, 96)  \
  X(ICU_PARSE_ERROR, 1001110, 97)              \
  X(ICU_INVALID_TABLE_FORMAT, 1001111, 98)     \
  X(ICU_INVALID_TABLE_FILE, 1001112, 99)       \
  X(ICU_UNSUPPORTED_ERROR, 1001113, 100)       \
  X(ICU_RESOURCE_TYPE_MISMATCH, 1001114, 101)  \
  X(ICU_ILLEGAL_ESCAPE_SEQUENCE, 1001115, 102) \
  X(ICU_UNSUPPORTED_ESCAPE_SEQ, 1001116, 103)  \
  X(ICU_NO_SPACE_AVAILABLE, 1001117, 104)      \
  X(ICU_ERROR_LIMIT, 1001118, 105)

/* INIFILE_LINE_TOO_LONG: a configuration file line longer than 1023 characters; the parser
 * reports it with the line's number, skips the line and reads on. Its name is message 200, the
 * first after the block of names 47 to 149.
 *
 * All error ids in the order of their messages (47 to 105, then 200). */
#define TAV_ERROR_ID_LIST(X) TAV_ERROR_ID_NO_ERROR(X) TAV_ERROR_ID_LIST_AFTER_NO_ERROR(X)

/* Error classes; the hundreds group them: 0-2 generic, 100 user, 200 resources and data,
 * 300 logic, 400 communication, 500 input/output, 900 hardware. Messages 106 to 132. */
#define TAV_ERROR_CLASS_LIST(X)       \
  X(UNKNOWN, 0, 106)                  \
  X(FUNCTION_NOT_SUPPORTED, 1, 107)   \
  X(FUNCTION_NOT_ENABLED, 2, 108)     \
  X(USER_ERROR, 100, 109)             \
  X(USER_DATA_ERROR, 101, 110)        \
  X(OUT_OF_MEMORY, 200, 111)          \
  X(RESOURCE_EXHAUSTED, 201, 112)     \
  X(INVALID_DATA, 202, 113)           \
  X(DATA_OUT_OF_BOUNDS, 203, 114)     \
  X(INVALID_POINTER, 204, 115)        \
  X(UNKNOWN_PROCESS, 205, 116)        \
  X(RESOURCE_MISSING, 206, 117)       \
  X(LOGIC, 300, 118)                  \
  X(INCONSISTENT_SITUATION, 301, 119) \
  X(COMMUNICATION_PROBLEM, 400, 120)  \
  X(IO_PROBLEM, 500, 121)             \
  X(IO_WRITE_PROBLEM, 501, 122)       \
  X(IO_READ_PROBLEM, 502, 123)        \
  X(IO_PERMISSION_DENIED, 503, 124)   \
  X(IO_NOT_EXISTENT, 504, 125)        \
  X(IO_ALREADY_IN_USE, 505, 126)      \
  X(IO_STILL_IN_USE, 506, 127)        \
  X(IO_INVALID_NAME, 507, 128)        \
  X(HARDWARE_PROBLEM, 900, 129)       \
  X(HARDWARE_SETUP, 901, 130)         \
  X(HARDWARE_PERFORMANCE, 902, 131)   \
  X(HARDWARE_NOT_SUPPORTED, 903, 132)

/* Severities; 3, 4 and 9 are deliberately unassigned. Messages 133 to 140. */
#define TAV_ERROR_SEVERITY_LIST(X) \
  X(NONE, 0, 133)                  \
  X(INFO, 1, 134)                  \
  X(WARNING, 2, 135)               \
  X(NORMAL, 5, 136)                \
  X(FATAL, 6, 137)                 \
  X(INTERNAL, 7, 138)              \
  X(CRITICAL, 8, 139)              \
  X(PANIC, 10, 140)

/* Recommended actions; 7 and 9 are unassigned. The messages of RETRYDELAY and USER are crossed
 * (146 and 145) with respect to the order of the values; the message table depends on it. */
#define TAV_ERROR_ACTION_LIST(X) \
  X(IGNORE, 0, 141)              \
  X(INFORM, 1, 142)              \
  X(WARN, 2, 143)                \
  X(RETRY, 3, 144)               \
  X(RETRYDELAY, 4, 146)          \
  X(USER, 5, 145)                \
  X(TERMINATE, 6, 147)           \
  X(ABORT, 8, 148)               \
  X(PANIC, 10, 149)

#endif /* TAV_ERROR_IDS_H */
