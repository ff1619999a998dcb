// tav_test_environment.h - an environment variable changed for the length of a test.

#ifndef TAV_TEST_ENVIRONMENT_H
#define TAV_TEST_ENVIRONMENT_H

#include <optional>
#include <string>

#include "tav_environment.h"

namespace tav::test {

// Sets a variable (null removes it) and puts the old value back when the object goes.
class VariableChange {
 public:
  VariableChange(const char* name, const char* value) : variable(name, nullptr) {
    if (const char* old = TavClEnvironmentVariableQueryOnly(name).getValue()) previous = old;
    variable.setNewValue(value);
  }
  ~VariableChange() { variable.setNewValue(previous ? previous->c_str() : nullptr); }

 private:
  TavClEnvironmentVariable variable;
  std::optional<std::string> previous;
};

}  // namespace tav::test

#endif  // TAV_TEST_ENVIRONMENT_H
