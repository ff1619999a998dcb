// tav_persistency.h - the root of objects that save themselves to a stream and restore from it.

#ifndef TAV_PERSISTENCY_H
#define TAV_PERSISTENCY_H

#include <iosfwd>

#include "tav_export.h"

class TAV_API TavClPersistencyABase {
 public:
  virtual ~TavClPersistencyABase();

  // Writes the object's state; true when the stream took all of it.
  virtual bool write(std::ostream& stream) const = 0;
  // Restores the state that write produced; true when the stream held all of it. On false the
  // object is unchanged.
  virtual bool read(std::istream& stream) = 0;

 protected:
  TavClPersistencyABase() = default;
  TavClPersistencyABase(const TavClPersistencyABase&) = default;
  TavClPersistencyABase& operator=(const TavClPersistencyABase&) = default;
};

#endif  // TAV_PERSISTENCY_H
