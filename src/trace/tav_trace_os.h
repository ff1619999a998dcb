// tav_trace_os.h - the file calls of the trace file writer and of the trace formatter.
//
// Implemented once per platform in posix/ and win32/ on the C runtime's low-level file calls,
// so that a handle is an int and error numbers are errno values on both.

#ifndef TAV_TRACE_OS_H
#define TAV_TRACE_OS_H

#include <cstdint>

namespace tav::os {

// Opens name for appending binary data, creating it readable and writable by its owner when
// it is missing. Returns the handle, or -1 with the error number in *errorNumber.
int openTraceFileForAppend(const char* name, int* errorNumber);

// Writes length bytes at the end of the file, resuming after partial writes and interrupted
// calls. Returns the number of bytes written; fewer than length means the write failed, with
// the error number in *errorNumber.
uint64_t writeTraceFile(int handle, const uint8_t* bytes, uint64_t length, int* errorNumber);

// The size of the open file, or -1 with the error number in *errorNumber.
int64_t traceFileSize(int handle, int* errorNumber);

// Cuts the open file to size bytes. False with the error number in *errorNumber.
bool truncateTraceFile(int handle, uint64_t size, int* errorNumber);

// Opens name for reading binary data. Returns the handle, or -1 with the error number in
// *errorNumber; a directory is refused on every platform (EISDIR).
int openTraceFileForRead(const char* name, int* errorNumber);

// Reads up to capacity bytes, resuming after interrupted calls. Returns the number read, 0 at
// the end of the file, or -1 with the error number in *errorNumber.
int64_t readTraceFile(int handle, uint8_t* buffer, uint64_t capacity, int* errorNumber);

// Closes the file: 0, or -1 when closing failed (as the C runtime's close).
int closeTraceFile(int handle);

}  // namespace tav::os

#endif  // TAV_TRACE_OS_H
