// Fuzzes the usage-string tokeniser and the argument check cursors against a reading of the
// grammar written here with indices, so that it can neither run past the text nor stall.
//
// Input: the usage string, then up to 15 arguments, all separated by NUL bytes (argument 0, the
// program name, is added). Checked: the tokens a walk stands on (offset, parenthesis depth,
// tag), that every walk ends on the terminator, the value rules of every switch token, the
// classification of every argument and the arguments the free-argument cursor visits.
//
// Then the console object checks the same arguments against the same usage, with tagged lines
// disabled when the input has an odd length: the faults it counts must be those the rules
// predict. Validation that fails ends the process, which the fuzzer would report, so the whole
// validation runs only for argument vectors without faults: it must return, and every switch
// given must then be found.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz_input.h"
#include "tav_argv.h"
#include "tav_console.h"

namespace {

// Every check walks the usage once per argument: quadratic, so keep inputs short.
constexpr std::size_t kMaxInputSize = 2048;
constexpr std::size_t kMaxArguments = 15;

struct Token {
  std::size_t offset;
  int depth;
  bool tagged;
};

bool isWord(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isSwitch(const char* text) { return text[0] == '-' && !(text[1] >= '0' && text[1] <= '9'); }

bool isDelimiterOrEnd(char c) { return c == '\0' || std::strchr("[]<>(){}-| ", c) != nullptr; }

bool sameUpToDelimiter(const char* token, const char* text) {
  const std::size_t length = std::strlen(text);
  return std::strncmp(token, text, length) == 0 && isDelimiterOrEnd(token[length]);
}

[[noreturn]] void fail(const char* what, const char* usage, std::size_t where) {
  std::fprintf(stderr, "%s (at %zu)\n", what, where);
  tav_fuzz::PrintQuoted("usage:", usage);
  std::abort();
}

// The tokens of a usage by the grammar: locating scans to the next token, skipping steps over
// the token's first character when it is '-', '/' or '<', then over letters, digits and dots
// (and blanks inside angle brackets).
std::vector<Token> referenceTokens(const char* s) {
  const std::size_t n = std::strlen(s);
  std::vector<Token> tokens;
  std::size_t i = 0;
  int depth = 0;
  bool tagged = false;
  bool angle = false;
  while (i < n) {
    bool blank = false;
    bool found = false;
    for (; i < n && !found; ++i) {
      const char c = s[i];
      if (c == '\n') {
        tagged = false;
      } else if (c == ' ') {
        blank = true;
      } else if (c == '!') {
        tagged = true;
      } else if (c == '"') {
        const char* close = std::strchr(s + i + 1, '"');
        i = close == nullptr ? n - 1 : static_cast<std::size_t>(close - s);
      } else if (c == '(') {
        ++depth;
      } else if (c == ')') {
        --depth;
      } else if (c == '-' || c == '/' || c == '<' || (isWord(c) && blank)) {
        if (c == '<') angle = true;
        found = true;
        break;
      } else if (c == '>') {
        angle = false;
      } else if (c == '.') {
        if (i + 1 < n && s[i + 1] == '.') {
          while (i + 1 < n && s[i + 1] == '.') ++i;
          found = true;
          break;
        }
        if (i + 1 < n) ++i;
      }
    }
    if (!found) break;
    tokens.push_back({i, depth, tagged});
    if (s[i] == '-' || s[i] == '/' || s[i] == '<') ++i;
    while (i < n && (isWord(s[i]) || s[i] == '.' || (angle && s[i] == ' '))) ++i;
  }
  return tokens;
}

struct Reference {
  const char* usage;
  std::vector<Token> tokens;

  const char* at(std::size_t k) const { return usage + tokens[k].offset; }
  bool tokenIsSwitch(std::size_t k) const { return isSwitch(at(k)); }

  bool tokenReqArg(std::size_t k) const {
    return tokens[k].depth != 0 && k + 1 < tokens.size() && !tokenIsSwitch(k + 1) &&
           tokens[k + 1].depth == tokens[k].depth;
  }
  bool tokenReqArgEllipsis(std::size_t k) const {
    if (tokens[k].depth == 0) return false;
    for (std::size_t j = k + 1; j < tokens.size(); ++j) {
      if (tokens[j].depth != tokens[k].depth || tokenIsSwitch(j)) return false;
      if (*at(j) == '.') return true;
    }
    return false;
  }
  // The first switch token that names the argument, or the token count.
  std::size_t findSwitch(const char* arg) const {
    const char* name = isSwitch(arg) ? arg + 1 : arg;
    for (std::size_t k = 0; k < tokens.size(); ++k) {
      if (tokenIsSwitch(k) && sameUpToDelimiter(at(k) + 1, name)) return k;
    }
    return tokens.size();
  }
  bool reqArg(const char* arg) const {
    if (!isSwitch(arg)) return false;
    const std::size_t k = findSwitch(arg);
    return k < tokens.size() && tokenReqArg(k);
  }
};

struct Classes {
  bool isSwitch, bound, free, legal, reqArg, hasArg, tagged;
};

Classes referenceClasses(const Reference& ref, int argc, const char* const* argv, int i) {
  Classes c{};
  const char* arg = argv[i];
  c.isSwitch = isSwitch(arg);
  c.bound = !c.isSwitch && i >= 2 && isSwitch(argv[i - 1]) && ref.reqArg(argv[i - 1]);
  c.free = !c.isSwitch && !c.bound;
  if (c.isSwitch) {
    c.legal = ref.findSwitch(arg) < ref.tokens.size();
  } else {
    c.legal = c.bound;
    for (std::size_t k = 0; k < ref.tokens.size() && !c.legal; ++k) {
      c.legal = !ref.tokenIsSwitch(k) && ref.tokens[k].depth == 0;
    }
  }
  c.reqArg = ref.reqArg(arg);
  c.hasArg = c.isSwitch && i + 1 < argc && !isSwitch(argv[i + 1]);
  for (std::size_t k = 0; k < ref.tokens.size() && !c.tagged; ++k) {
    c.tagged = ref.tokens[k].tagged && sameUpToDelimiter(ref.at(k), arg);
  }
  return c;
}

void checkTokens(const Reference& ref) {
  TavClUsageCursor cursor(ref.usage);
  std::size_t k = 0;
  for (bool more = cursor.setToFirst(); more; more = cursor.setToNext(), ++k) {
    if (k >= ref.tokens.size()) fail("the cursor finds a token too many", ref.usage, k);
    const Token& token = ref.tokens[k];
    if (cursor.getPosition() != ref.at(k)) fail("token at another place", ref.usage, k);
    if (cursor.getParenthesisDepth() != token.depth) fail("token depth differs", ref.usage, k);
    if (cursor.isOnTaggedLine() != token.tagged) fail("token tag differs", ref.usage, k);
    if (cursor.isSwitch() && cursor.reqArg() != ref.tokenReqArg(k)) {
      fail("reqArg differs", ref.usage, k);
    }
    if (cursor.isSwitch() && cursor.reqArgEllipsis() != ref.tokenReqArgEllipsis(k)) {
      fail("reqArgEllipsis differs", ref.usage, k);
    }
  }
  if (k != ref.tokens.size()) fail("the cursor misses tokens", ref.usage, k);
  if (cursor.getPosition() != ref.usage + std::strlen(ref.usage)) {
    fail("the walk did not stop at the end", ref.usage, k);
  }
}

void checkArguments(const Reference& ref, int argc, const char* const* argv) {
  TavClArgvCheckCursor cursor(argc, argv, ref.usage);
  std::vector<int> freeIndices;
  int i = 1;
  for (bool more = cursor.setToFirst(); more; more = cursor.setToNext(), ++i) {
    const Classes c = referenceClasses(ref, argc, argv, i);
    const Classes actual{cursor.isSwitch(), cursor.isBound(), cursor.isFree(),  cursor.isLegal(),
                         cursor.reqArg(),   cursor.hasArg(),  cursor.isTagged()};
    if (std::memcmp(&c, &actual, sizeof c) != 0) {
      tav_fuzz::PrintQuoted("argument:", argv[i]);
      fail("the classes of an argument differ", ref.usage, static_cast<std::size_t>(i));
    }
    if (c.free) freeIndices.push_back(i);
  }
  TavClArgvFreeCursor forward(argc, argv, ref.usage);
  std::size_t n = 0;
  for (bool more = forward.setToFirst(); more; more = forward.setToNext(), ++n) {
    if (n >= freeIndices.size() || forward.getAsCString() != argv[freeIndices[n]]) {
      fail("the free cursor visits another argument", ref.usage, n);
    }
  }
  if (n != freeIndices.size()) fail("the free cursor misses arguments", ref.usage, n);
  TavClArgvFreeCursor backward(argc, argv, ref.usage);
  for (bool more = backward.setToLast(); more; more = backward.setToPrevious()) {
    if (n == 0 || backward.getAsCString() != argv[freeIndices[--n]]) {
      fail("the free cursor visits another argument backward", ref.usage, n);
    }
  }
  if (n != 0) fail("the free cursor misses arguments backward", ref.usage, n);
}

// The faults the console's validation reports, counted as the rules state them: an argument that
// is neither legal nor the quiet switch is one fault (and nothing more is checked for it); a
// tagged argument is one when tagged lines are disabled; a switch is one more for every later
// argument that is the same switch.
unsigned long referenceFaults(const Reference& ref, int argc, const char* const* argv,
                              bool taggedDisabled) {
  unsigned long faults = 0;
  for (int i = 1; i < argc; ++i) {
    const char* arg = argv[i];
    const Classes c = referenceClasses(ref, argc, argv, i);
    if (!c.legal && std::strcmp(arg, "-quiet") != 0) {
      ++faults;
      continue;
    }
    if (taggedDisabled && c.tagged) ++faults;
    for (int j = i + 1; j < argc && c.isSwitch; ++j) {
      if (isSwitch(argv[j]) && std::strcmp(argv[j], arg) == 0) ++faults;
    }
  }
  return faults;
}

// Every argument vector goes through the check that counts the faults without ending the
// process; its report lines go to a null stream. Arguments without faults and without a help
// switch then pass the whole validation, which must return and find every switch given.
void checkValidation(const Reference& ref, int argc, const char* const* argv, bool taggedDisabled) {
  TavClConsoleUI console(argc, argv);
  console.getParams().redirectStreams(nullptr, nullptr);
  if (taggedDisabled) console.disableTaggedLines();
  console.displayUsageHelp(ref.usage, nullptr, false);
  const unsigned long expected =
      ref.usage[0] == '\0' ? 0 : referenceFaults(ref, argc, argv, taggedDisabled);
  if (console.checkArguments() != expected) fail("the fault count differs", ref.usage, expected);
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "-h") == 0 || std::strcmp(argv[i], "-H") == 0 ||
        std::strcmp(argv[i], "-?") == 0) {
      return;
    }
  }
  if (expected != 0 || ref.usage[0] == '\0') return;
  console.handleUsageHelp(ref.usage);
  for (int i = 1; i < argc; ++i) {
    if (isSwitch(argv[i]) && !console.hasArgSwitch(argv[i])) {
      tav_fuzz::PrintQuoted("argument:", argv[i]);
      fail("a valid switch is not found", ref.usage, static_cast<std::size_t>(i));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The switch names and texts of the console from the library's own table, whatever the locale.
  TavClConsoleUI::useBuiltInStringTable(true);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kMaxInputSize) return 0;
  auto fields = tav_fuzz::SplitFields(data, data + size, kMaxArguments + 1);
  std::unique_ptr<char[]> program =
      tav_fuzz::CopyString(reinterpret_cast<const std::uint8_t*>("prog"), 4);
  std::vector<const char*> argv{program.get()};
  for (std::size_t f = 1; f < fields.size(); ++f) argv.push_back(fields[f].get());
  const int argc = static_cast<int>(argv.size());
  argv.push_back(nullptr);

  Reference ref{fields[0].get(), referenceTokens(fields[0].get())};
  checkTokens(ref);
  checkArguments(ref, argc, argv.data());
  checkValidation(ref, argc, argv.data(), size % 2 == 1);
  return 0;
}
