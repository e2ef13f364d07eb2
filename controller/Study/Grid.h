#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace controller {

/// A fault of the command line, in words for the user; the program ends with status 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A global variable and the values it is to take, as texts. The letter of its type is that of option -O of the simulator,
/// or '\0' where the user has not given it.
struct Setting {
  char letter = '\0';
  std::string name;
  std::vector<std::string> values;
};

/// One point of a grid: a value for each setting.
struct Assignment {
  char letter = '\0';
  std::string name;
  std::string value;
};

/// Reads `[<type>:]<name>=<values>`. Values are separated by commas; each is a text or a range `<first>..<last>` or
/// `<first>..<last>..<step>` of decimals, both ends included, with step 1 if none is given. A range of decimals is exact:
/// 0..1..0.1 holds 0.3 and not 0.30000000000000004. The type is a letter of option -O or its name, such as d or double.
/// Throws  UsageError
[[nodiscard]] Setting readSetting(const std::string& text);

/// All combinations of the settings' values, the last setting fastest; one empty point for no setting.
/// Throws  UsageError where a variable is set twice or the points are more than a hundred thousand
[[nodiscard]] std::vector<std::vector<Assignment>> gridPoints(const std::vector<Setting>& settings);

}  // namespace controller
