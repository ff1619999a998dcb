// tav_trace_file_writer.cpp - appending hand-outs of the trace buffer to the trace file.
//
// A hand-out is whatever the ring held when it filled up or was flushed, so it may begin or end
// inside a record. As long as every write succeeds the file is simply the hand-outs one after
// the other. When one fails, its bytes are lost, and a reader that finds records by adding up
// their lengths would be thrown off for the rest of the file. So the writer follows the record
// boundaries through everything it is handed (the bytes are in memory even when they cannot be
// written) and keeps the file ending on a whole record: it cuts off the part of a record that
// an earlier hand-out wrote when that record cannot be finished, and drops the tail of any
// record whose start never reached the file.

#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "../fs/tav_file_io_os.h"
#include "tav_error.h"
#include "tav_trace_buffer.h"
#include "tav_trace_record_layout.h"

namespace {

constexpr uint64_t kNoBoundary = UINT64_MAX;

// One line on the report stream: "[TAV: TRACE: " text "]".
void report(const char* format, ...) TAV_PRINTF_FORMAT(1, 2);
void report(const char* format, ...) {
  FILE* stream = tavGetReportStream();
  std::fputs("[TAV: TRACE: ", stream);
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stream, format, arguments);
  va_end(arguments);
  std::fputs("]\n", stream);
  std::fflush(stream);
}

// A run of bytes of the handed-out stream.
struct Span {
  const uint8_t* bytes;
  uint64_t length;
};

}  // namespace

TavClTraceFileWriter::TavClTraceFileWriter(TavClTraceEnvironmentABase& environment)
    : environment(environment) {}

TavClTraceFileWriter::~TavClTraceFileWriter() = default;

void TavClTraceFileWriter::appendHandOut(const _TavStTraceHandOut* handOut) {
  if (handOut == nullptr || handOut->context == nullptr) return;
  static_cast<TavClTraceFileWriter*>(handOut->context)
      ->append(handOut->firstPiece, handOut->firstLength, handOut->secondPiece,
               handOut->secondLength, handOut->wholeRecords != 0);
}

uint64_t TavClTraceFileWriter::writeToFile(int fileHandle, const uint8_t* bytes, uint64_t length,
                                           int* errorNumber) {
  uint64_t written = 0;
  const tav::os::OsStatus status = tav::os::writeFile(fileHandle, bytes, length, &written);
  if (!status.ok()) *errorNumber = status.code;
  return written;
}

TavClTraceFileWriter::Boundaries TavClTraceFileWriter::followRecords(const uint8_t* bytes,
                                                                     uint64_t length) {
  constexpr size_t kHeaderSize = tav::trace_record::kHeaderSize;
  Boundaries found{kNoBoundary, kNoBoundary};
  uint64_t position = 0;
  while (position < length) {
    // A whole record in the bytes, the usual case, is stepped over straight from its header.
    if (headerBytesSeen == 0 && length - position >= kHeaderSize) {
      const uint64_t recordLength = kHeaderSize + tav::trace_record::bodySizeOf(bytes + position);
      if (recordLength <= length - position) {
        position += recordLength;
        if (found.first == kNoBoundary) found.first = position;
        found.last = position;
        continue;
      }
    }
    if (headerBytesSeen < kHeaderSize) {
      const uint64_t wanted = kHeaderSize - headerBytesSeen;
      const uint64_t take = wanted < length - position ? wanted : length - position;
      std::memcpy(header + headerBytesSeen, bytes + position, take);
      headerBytesSeen += static_cast<uint32_t>(take);
      position += take;
      if (headerBytesSeen < kHeaderSize) break;
      bodyBytesToCome = tav::trace_record::bodySizeOf(header);
    }
    const uint64_t take = bodyBytesToCome < length - position ? bodyBytesToCome : length - position;
    position += take;
    bodyBytesToCome -= take;
    if (bodyBytesToCome == 0) {
      headerBytesSeen = 0;
      if (found.first == kNoBoundary) found.first = position;
      found.last = position;
    }
  }
  return found;
}

void TavClTraceFileWriter::append(const uint8_t* firstPiece, uint64_t firstLength,
                                  const uint8_t* secondPiece, uint64_t secondLength,
                                  bool wholeRecords) {
  if (firstPiece == nullptr) firstLength = 0;
  if (secondPiece == nullptr) secondLength = 0;
  const uint64_t total = firstLength + secondLength;

  // Where the records of this hand-out begin and end, as offsets into both pieces together.
  // Whole records behind a file that ends on a record begin and end on records: the boundaries
  // are needed only where a hand-out starts or ends inside a record.
  const bool startWasLost = skippingLostRecord;
  const bool followed =
      !wholeRecords || headerBytesSeen != 0 || bodyBytesToCome != 0 || skippingLostRecord;
  const Boundaries inFirst =
      followed ? followRecords(firstPiece, firstLength) : Boundaries{kNoBoundary, kNoBoundary};
  const Boundaries inSecond =
      followed ? followRecords(secondPiece, secondLength) : Boundaries{kNoBoundary, kNoBoundary};
  const uint64_t firstEnd = inFirst.first != kNoBoundary    ? inFirst.first
                            : inSecond.first != kNoBoundary ? firstLength + inSecond.first
                                                            : total;
  const uint64_t lastEnd = inSecond.last != kNoBoundary  ? firstLength + inSecond.last
                           : inFirst.last != kNoBoundary ? inFirst.last
                                                         : kNoBoundary;
  const bool endsOnRecord = headerBytesSeen == 0;

  // The tail of a record whose start was lost stays out of the file.
  const uint64_t keepFrom = startWasLost ? firstEnd : 0;
  Span pieces[2] = {{firstPiece, 0}, {secondPiece, 0}};
  if (keepFrom < firstLength) {
    pieces[0] = {firstPiece + keepFrom, firstLength - keepFrom};
    pieces[1] = {secondPiece, secondLength};
  } else if (keepFrom < total) {
    pieces[1] = {secondPiece + (keepFrom - firstLength), total - keepFrom};
  }

  const char* fileName = environment.getTraceFileName();
  const bool verbose = environment.isVerbose();
  int file = -1;
  const tav::os::OsStatus opened = tav::os::openFile(fileName, tav::os::FileOpening::append, &file);
  if (!opened.ok()) {
    if (verbose) report("could not open: %s (errno: %d)", fileName, opened.code);
    loseHandOut(endsOnRecord);
    return;
  }
  if (verbose) report("writing file: %s", fileName);
  uint64_t sizeFound = 0;
  int64_t size = tav::os::fileSizeOf(file, &sizeFound).ok() ? static_cast<int64_t>(sizeFound) : -1;
  if (verbose) report("file exists with size: %" PRId64, size);

  // Lost bytes at the end of the file go first; nothing may be appended behind them.
  bool cutBackFailed = false;
  if (danglingBytesLost) cutBackFailed = size < 0 || !cutBack(file, &size, verbose);
  bool failed = cutBackFailed;
  uint64_t written = 0;
  for (const Span& piece : pieces) {
    if (failed || piece.length == 0) continue;
    int errorNumber = 0;
    const uint64_t count = writeToFile(file, piece.bytes, piece.length, &errorNumber);
    written += count;
    if (count < piece.length) {
      if (verbose) report("could not write: %s (errno: %d)", fileName, errorNumber);
      failed = true;
    }
  }

  if (failed) {
    // Whatever this hand-out put into the file belongs to records that cannot be finished, and
    // so does the part of the current record that earlier hand-outs wrote.
    danglingBytes += written;
    loseHandOut(endsOnRecord);
    if (danglingBytesLost && !cutBackFailed && size >= 0) {
      size += static_cast<int64_t>(written);
      cutBack(file, &size, verbose);
    }
  } else if (endsOnRecord) {
    danglingBytes = 0;
    skippingLostRecord = false;
  } else if (lastEnd != kNoBoundary) {
    danglingBytes = total - lastEnd;  // the last record began inside this hand-out
    skippingLostRecord = false;
  } else if (!startWasLost) {
    danglingBytes += total;  // the hand-out lies wholly inside one record
  }

  const int closeStatus = tav::os::closeFile(file).ok() ? 0 : -1;
  if (verbose) report("bytes written: %" PRIu64 " file status: %d", written, closeStatus);
}

void TavClTraceFileWriter::loseHandOut(bool endsOnRecord) {
  danglingBytesLost = danglingBytes != 0;
  // The record the hand-out ends in has lost its start (or, at the least, the part before):
  // the rest of it must not follow in the next hand-out.
  skippingLostRecord = !endsOnRecord;
}

bool TavClTraceFileWriter::cutBack(int file, int64_t* size, bool verbose) {
  const auto dangling = static_cast<int64_t>(danglingBytes);
  // A file shorter than the part to cut is not the file those bytes went to (it was replaced
  // or cleared meanwhile): there is nothing of the lost record left in it.
  if (*size < dangling) {
    danglingBytes = 0;
    danglingBytesLost = false;
    return true;
  }
  const tav::os::OsStatus cut =
      tav::os::truncateFile(file, static_cast<uint64_t>(*size - dangling));
  if (!cut.ok()) {
    if (verbose) {
      report("could not cut back: %s (errno: %d)", environment.getTraceFileName(), cut.code);
    }
    return false;
  }
  *size -= dangling;
  danglingBytes = 0;
  danglingBytesLost = false;
  if (verbose) report("file cut back to size: %" PRId64, *size);
  return true;
}
