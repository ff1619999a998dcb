// tav_file_io_os.h - opening, reading, writing and sizing files: the one low-level file seam.
//
// The trace file writer, the trace formatter and the file copy all read and write through these
// calls. A handle is the C runtime's file descriptor on every platform, so that the system
// numbers in a status are errno values on both. Implemented once per platform in posix/ and
// win32/.

#ifndef TAV_FILE_IO_OS_H
#define TAV_FILE_IO_OS_H

#include <cstdint>

#include "../core/tav_os_status.h"

namespace tav::os {

enum class FileOpening {
  read,       // an existing file for reading; a directory is refused (isDirectory)
  append,     // for writing at its end, created readable and writable by its owner if missing
  createNew,  // a new file for writing, readable and writable by its owner (alreadyExists if
              // the name exists)
  createNewDefault,  // the same, with the permissions a new file gets by default (on POSIX,
                     // readable and writable by all less the process's file-creation mask)
};

// Opens name and puts the handle into *handle; nothing is opened when the status is a failure.
// No handle is inherited by child processes, and opening a pipe for reading does not wait for
// a writer.
OsStatus openFile(const char* name, FileOpening opening, int* handle);

// Reads up to capacity bytes into buffer; *count is the number read, 0 at the end of the file.
OsStatus readFile(int handle, uint8_t* buffer, uint64_t capacity, uint64_t* count);

// Writes all length bytes, resuming after partial writes and interrupted calls; *written is the
// number that reached the file, length unless the status is a failure. A file that takes no
// more bytes without saying why is full (diskFull).
OsStatus writeFile(int handle, const uint8_t* bytes, uint64_t length, uint64_t* written);

OsStatus fileSizeOf(int handle, uint64_t* size);

// Cuts the open file to size bytes.
OsStatus truncateFile(int handle, uint64_t size);

// Waits until what was written has reached the disk.
OsStatus flushFileToDisk(int handle);

// Closes the handle; a failure means written data may not have reached the file.
OsStatus closeFile(int handle);

}  // namespace tav::os

#endif  // TAV_FILE_IO_OS_H
