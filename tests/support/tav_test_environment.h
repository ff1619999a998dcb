// tav_test_environment.h - an environment variable changed for the length of a test.

#ifndef TAV_TEST_ENVIRONMENT_H
#define TAV_TEST_ENVIRONMENT_H

#include <optional>
#include <string>

#include "tav_environment.h"

namespace tav::test {

// Sets a variable (null removes it) and puts the old value back when the object goes. The old
// value is read before the variable is touched. Given no value, the variable stays as it is
// and only comes back at the end, however the test changed it meanwhile.
class VariableChange {
 public:
  VariableChange(const char* name, const char* value)
      : previous(valueOf(name)), variable(name, value) {}
  explicit VariableChange(const char* name)
      : previous(valueOf(name)), variable(name, previous ? previous->c_str() : nullptr) {}
  ~VariableChange() { variable.setNewValue(previous ? previous->c_str() : nullptr); }
  VariableChange(const VariableChange&) = delete;
  VariableChange& operator=(const VariableChange&) = delete;

 private:
  static std::optional<std::string> valueOf(const char* name) {
    const TavClEnvironmentVariableQueryOnly query(name);
    return query.getValue() != nullptr ? std::optional<std::string>(query.getValue())
                                       : std::nullopt;
  }

  std::optional<std::string> previous;
  TavClEnvironmentVariable variable;
};

}  // namespace tav::test

#endif  // TAV_TEST_ENVIRONMENT_H
