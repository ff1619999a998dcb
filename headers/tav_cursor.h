// tav_cursor.h - the two abstract cursor interfaces the library walks its sequences with.
//
// A cursor stands on one element of a sequence it borrows (command-line arguments, the tokens of
// a usage string, configuration sections and options). Every move answers whether the cursor
// stands on an element afterwards, so a walk reads
//     for (bool more = c.setToFirst(); more; more = c.setToNext()) ...
// Cursors own nothing and are copied freely to look ahead without moving the original.

#ifndef TAV_CURSOR_H
#define TAV_CURSOR_H

#include "tav_export.h"
#include "tav_memmgr.h"

// A cursor that moves forward only.
class TAV_API TavClUniDirCursorABase : public TavClMemoryManagedObject {
 public:
  virtual ~TavClUniDirCursorABase();
  // True while the cursor stands on an element.
  virtual bool isValid() const = 0;
  // Moves to the first element; false when the sequence is empty.
  virtual bool setToFirst() = 0;
  // Moves one element on; false when that steps past the end.
  virtual bool setToNext() = 0;

 protected:
  TavClUniDirCursorABase() = default;
  TavClUniDirCursorABase(const TavClUniDirCursorABase&) = default;
  TavClUniDirCursorABase& operator=(const TavClUniDirCursorABase&) = default;
};

// A cursor that moves both ways.
class TAV_API TavClBiDirCursorABase : public TavClUniDirCursorABase {
 public:
  ~TavClBiDirCursorABase() override;
  // Moves to the last element; false when the sequence is empty.
  virtual bool setToLast() = 0;
  // Moves one element back; false when that steps before the start.
  virtual bool setToPrevious() = 0;

 protected:
  TavClBiDirCursorABase() = default;
  TavClBiDirCursorABase(const TavClBiDirCursorABase&) = default;
  TavClBiDirCursorABase& operator=(const TavClBiDirCursorABase&) = default;
};

#endif /* TAV_CURSOR_H */
