// tav_argv.h - cursors over the command-line arguments of a process and over its usage string.
//
// The usage string is both the usage line shown to the user and the grammar the arguments are
// checked against. Only some of its characters carry meaning:
//     -name           a switch token                 <text words>   a placeholder token
//     blank + word    a bare word token              ..., ..        an ellipsis token
//     ( )             a switch inside takes a value  [ ]            optional part (counted only)
//     !               the rest of the line is tagged "text"         shown, never parsed
// A bare word counts only when a blank stands before it. A switch is an argument whose first
// character is '-' and whose second is not a decimal digit, so "-5" is a value, "-" a switch.
// A '/' or a '-' before a digit is a token that is never a switch, and a single '.' hides the
// character after it: put such text in double quotes.
//
// TavClArgvCursor walks argv[1] .. argv[argc-1]; TavClArgvCheckCursor classifies the argument it
// stands on against a usage string; TavClArgvFreeCursor visits only the free arguments (neither
// switches nor values of switches); TavClUsageCursor walks the tokens of a usage string.
//
// All cursors borrow the argument vector and the usage text: both must outlive the cursor. No
// operation allocates or reports an error; a question about nothing answers false.

#ifndef TAV_ARGV_H
#define TAV_ARGV_H

#include <stdint.h>

#include "tav_cursor.h"
#include "tav_export.h"

class TavClConsoleUI;

// Walks the arguments of a process in both directions; argument 0, the program name, is never a
// position. A new cursor stands on argument 1.
class TAV_API TavClArgvCursor : public TavClBiDirCursorABase {
 public:
  TavClArgvCursor(int argc, const char* const* argv);
  // Over the arguments the console object was initialised with. Defined with the console object,
  // as are the console constructors of the two cursors below.
  explicit TavClArgvCursor(const TavClConsoleUI& console);
  TavClArgvCursor(const TavClArgvCursor&) = default;
  TavClArgvCursor& operator=(const TavClArgvCursor&) = default;
  ~TavClArgvCursor() override;

  // True iff 1 <= index < argc.
  bool isValid() const override;
  bool setToFirst() override;
  bool setToNext() override;
  bool setToLast() override;
  bool setToPrevious() override;

  // The current argument; call only while the cursor is valid.
  const char* getAsCString() const;
  const char* getArgv0() const;
  // The current argument starts with '-' not followed by a digit.
  bool isSwitch() const;
  // The current argument is a switch whose text after the '-' equals name exactly; a leading
  // switch indicator of name is skipped first, so "-v" matches "v" and "-v" but not "verbose".
  bool matches(const char* name) const;
  // Searches from the first argument for one that matches name and stays there; false, with the
  // cursor past the end, when none does.
  bool positionTo(const char* name);

 protected:
  int32_t argumentCount;
  int32_t index;
  const char* const* argumentVector;
};

// An argument cursor that knows the usage string, and so whether the current argument is legal,
// is a switch that takes a value, or is the value of the switch before it. Each question walks
// the usage string once from its start.
class TAV_API TavClArgvCheckCursor : public TavClArgvCursor {
 public:
  TavClArgvCheckCursor(int argc, const char* const* argv, const char* usage);
  // Over the console object's arguments and its current usage string (getUsage()).
  explicit TavClArgvCheckCursor(const TavClConsoleUI& console);
  TavClArgvCheckCursor(const TavClArgvCheckCursor&) = default;
  TavClArgvCheckCursor& operator=(const TavClArgvCheckCursor&) = default;
  ~TavClArgvCheckCursor() override;

  // A switch: some switch token of the usage matches it. Otherwise: it is bound, or the usage
  // has a non-switch token outside parentheses (whatever its text).
  bool isLegal() const;
  // A switch whose first matching usage token takes a value.
  bool reqArg() const;
  // Not a switch, and the argument before it is a switch that takes a value.
  bool isBound() const;
  // A switch followed by an argument that is not a switch (a value was given).
  bool hasArg() const;
  // Neither a switch nor bound.
  bool isFree() const;
  // Some token on a tagged ('!') line of the usage matches the argument literally.
  bool isTagged() const;

 protected:
  const char* usageText;
};

// Visits only the free arguments: those that are neither switches nor values of switches.
class TAV_API TavClArgvFreeCursor : public TavClArgvCheckCursor {
 public:
  TavClArgvFreeCursor(int argc, const char* const* argv, const char* usage);
  // Over the console object's arguments and its current usage string.
  explicit TavClArgvFreeCursor(const TavClConsoleUI& console);
  TavClArgvFreeCursor(const TavClArgvFreeCursor&) = default;
  TavClArgvFreeCursor& operator=(const TavClArgvFreeCursor&) = default;
  ~TavClArgvFreeCursor() override;

  bool setToFirst() override;
  bool setToNext() override;
  bool setToLast() override;
  bool setToPrevious() override;
};

// Walks the tokens of a usage string. Set it with setToFirst before the first question. The
// depths and flags describe everything scanned since construction; every check makes a fresh
// cursor and walks from the start, so for those walks they are exact.
class TAV_API TavClUsageCursor : public TavClUniDirCursorABase {
 public:
  explicit TavClUsageCursor(const char* usage);
  ~TavClUsageCursor() override;

  // The first character is '-' and the second is not a decimal digit.
  static bool isSwitchIndicator(const char* text);
  // False for the characters the usage display leaves out: '"', '(' and ')'.
  static bool isToBeDisplayed(char c);

  // The cursor stands on a token (not on the terminating NUL).
  bool isValid() const override;
  bool setToFirst() override;
  bool setToNext() override;

  bool isSwitch() const;
  // The token is an ellipsis ("..").
  bool isArgEllipsis() const;
  // text equals the token (a switch token includes its '-') and the token ends there.
  bool matches(const char* text) const;
  // arg, without its switch indicator, equals the switch token after its '-', which ends there.
  bool matchesSwitch(const char* arg) const;
  // The switch stands inside parentheses and the next token, at the same depth, is no switch.
  bool reqArg() const;
  // The switch stands inside parentheses and an ellipsis follows at the same depth before any
  // other switch.
  bool reqArgEllipsis() const;

  // Where the current token begins, and how deep in parentheses and brackets the scan stands.
  const char* getPosition() const { return position; }
  int32_t getParenthesisDepth() const { return parenthesisDepth; }
  int32_t getBracketDepth() const { return bracketDepth; }
  // The current token lies on a line that a '!' has tagged.
  bool isOnTaggedLine() const { return tagged; }

 private:
  // Look-ahead copies are made only inside the class.
  TavClUsageCursor(const TavClUsageCursor&) = default;
  TavClUsageCursor& operator=(const TavClUsageCursor&) = delete;

  bool locateToken();
  void skipToken();

  const char* start;
  const char* position;
  int32_t bracketDepth;
  int32_t parenthesisDepth;
  bool tagged;
  bool insideAngleBrackets;
};

#endif /* TAV_ARGV_H */
