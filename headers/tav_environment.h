// tav_environment.h - environment variables of the running process.
//
// TavClEnvironmentVariable reads and changes a variable; TavClEnvironmentVariableQueryOnly only
// reads one. Every on/off switch of the library is read with hasValueEnabled.
//
// Setting a variable to an empty value follows the C runtime: on POSIX the variable then exists
// with an empty value, on Windows it is removed.

#ifndef TAV_ENVIRONMENT_H
#define TAV_ENVIRONMENT_H

#include <stddef.h>

#include "tav_export.h"

class TAV_API TavClEnvironmentVariableABase {
 public:
  // Names up to this length are kept inside the object; longer ones, of any length, are copied
  // into memory from the memory manager.
  static constexpr size_t kInlineNameLength = 40;

  ~TavClEnvironmentVariableABase();
  TavClEnvironmentVariableABase(const TavClEnvironmentVariableABase& other);
  TavClEnvironmentVariableABase& operator=(const TavClEnvironmentVariableABase& other);

  // The current value, or null when the variable is not set. The text belongs to the C runtime
  // and stays valid until the environment changes.
  const char* getValue() const;
  // Whether the variable is set; an empty value counts as set.
  bool hasValue() const;
  // Whether the variable is set to "ON", "YES", "TRUE" or "1", in any letter case. Every other
  // value, the empty one included, means off.
  bool hasValueEnabled() const;
  const char* getName() const { return name; }

 protected:
  explicit TavClEnvironmentVariableABase(const char* name);
  // Takes a copy of the whole name; null means the empty name. Throws when a long name cannot
  // be allocated, and the old name stays.
  void initName(const char* name);

  const char* name = inlineName;  // inlineName, or a block of the memory manager

 private:
  char inlineName[kInlineNameLength + 1] = {};
};

class TAV_API TavClEnvironmentVariable : public TavClEnvironmentVariableABase {
 public:
  // Names the variable and sets it to value; a null value removes it.
  TavClEnvironmentVariable(const char* name, const char* value);
  ~TavClEnvironmentVariable();
  TavClEnvironmentVariable(const TavClEnvironmentVariable&) = delete;
  TavClEnvironmentVariable& operator=(const TavClEnvironmentVariable&) = delete;

  // Sets the variable to value, or removes it when value is null. False when the C runtime
  // refuses the change.
  bool setNewValue(const char* value);
  // Appends text to the current value (an unset variable counts as empty). No separator is
  // inserted: to extend a search path, pass the separator as part of the text.
  bool appendValue(const char* text);
  // Removes the variable.
  void resetValue();
  // The assignment text ("NAME=value", or the bare name) last handed to the C runtime.
  const char* getAssignment() const { return assignment != nullptr ? assignment : ""; }

 private:
  void buildAssignment(const char* value);

  char* assignment = nullptr;  // owned; allocated through the memory manager
  size_t assignmentCapacity = 0;
};

class TAV_API TavClEnvironmentVariableQueryOnly : public TavClEnvironmentVariableABase {
 public:
  // The name "?", which no variable has: every query answers "not set" until setNewName.
  TavClEnvironmentVariableQueryOnly();
  explicit TavClEnvironmentVariableQueryOnly(const char* name);
  explicit TavClEnvironmentVariableQueryOnly(const TavClEnvironmentVariableABase& other);

  void setNewName(const char* newName) { initName(newName); }
};

#endif  // TAV_ENVIRONMENT_H
