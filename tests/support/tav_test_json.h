// tav_test_json.h - a small strict JSON parser for checking what the library writes.
//
// It accepts exactly RFC 8259 JSON: one value with blanks (space, tab, line feed, carriage
// return) around it; strings of well-formed UTF-8 without raw control characters, with the
// escapes \" \\ \/ \b \f \n \r \t and \uXXXX (surrogates only in pairs); numbers without leading
// zeros, "+" or a bare "."; no trailing commas, comments or other extensions. Nesting deeper
// than kMaxDepth is refused. Header-only, so that the fuzz targets can use it too.

#ifndef TAV_TEST_JSON_H
#define TAV_TEST_JSON_H

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace tav::test {

struct JsonValue {
  enum Kind { kLiteral, kNumber, kString, kArray, kObject } kind = kLiteral;
  std::string text;                // a string's text (UTF-8), a number or literal as written
  std::vector<JsonValue> items;    // the elements of an array, the member values of an object
  std::vector<std::string> names;  // the member names of an object

  double number() const { return std::strtod(text.c_str(), nullptr); }
  // The first member named name, or null.
  const JsonValue* find(const std::string& name) const {
    for (size_t i = 0; i < names.size(); ++i) {
      if (names[i] == name) return &items[i];
    }
    return nullptr;
  }
};

class JsonParser {
 public:
  static constexpr int kMaxDepth = 200;

  // True when text is one valid JSON value, given in *value; *error says what failed where.
  static bool parse(const std::string& text, JsonValue* value, std::string* error = nullptr) {
    JsonParser parser(text);
    JsonValue scratch;
    bool ok = parser.parseValue(value != nullptr ? *value : scratch, 0);
    if (ok && parser.at != text.size()) ok = parser.fail("text after the value");
    if (!ok && error != nullptr) *error = parser.problem + " at byte " + std::to_string(parser.at);
    return ok;
  }

 private:
  explicit JsonParser(const std::string& text) : text(text) {}

  bool fail(const char* what) {
    if (problem.empty()) problem = what;
    return false;
  }
  unsigned char byte(size_t i) const { return i < text.size() ? text[i] : 0; }
  bool isDigit(size_t i) const { return byte(i) >= '0' && byte(i) <= '9'; }
  void skipBlanks() {
    while (at < text.size() && std::strchr(" \t\n\r", text[at]) != nullptr) ++at;
  }
  bool expect(char c) {
    skipBlanks();
    return byte(at) == c ? (++at, true) : false;
  }

  bool parseValue(JsonValue& value, int depth) {
    skipBlanks();
    const unsigned char c = byte(at);
    bool ok;
    if (depth > kMaxDepth) return fail("nesting too deep");
    if (c == '{' || c == '[') {
      value.kind = c == '{' ? JsonValue::kObject : JsonValue::kArray;
      ok = parseContainer(value, c == '{' ? '}' : ']', depth);
    } else if (c == '"') {
      value.kind = JsonValue::kString;
      ok = parseString(value.text);
    } else {
      ok = parseScalar(value);
    }
    skipBlanks();
    return ok;
  }

  bool parseContainer(JsonValue& value, char close, int depth) {
    ++at;
    if (expect(close)) return true;
    do {
      if (close == '}') {
        value.names.emplace_back();
        if (!expect('"')) return fail("expected a member name");
        --at;
        if (!parseString(value.names.back())) return false;
        if (!expect(':')) return fail("expected ':'");
      }
      value.items.emplace_back();
      if (!parseValue(value.items.back(), depth + 1)) return false;
    } while (expect(','));
    return expect(close) ? true : fail("expected ',' or the end of the container");
  }

  bool parseScalar(JsonValue& value) {
    for (const char* literal : {"true", "false", "null"}) {
      if (text.compare(at, std::strlen(literal), literal) == 0) {
        value.text = literal;
        at += value.text.size();
        return true;
      }
    }
    const size_t start = at;
    if (byte(at) == '-') ++at;
    if (!isDigit(at)) return fail("expected a value");
    if (byte(at++) != '0') {
      while (isDigit(at)) ++at;
    }
    if (byte(at) == '.') {
      if (!isDigit(++at)) return fail("expected a digit after '.'");
      while (isDigit(at)) ++at;
    }
    if (byte(at) == 'e' || byte(at) == 'E') {
      if (byte(++at) == '+' || byte(at) == '-') ++at;
      if (!isDigit(at)) return fail("expected an exponent");
      while (isDigit(at)) ++at;
    }
    value.kind = JsonValue::kNumber;
    value.text = text.substr(start, at - start);
    return true;
  }

  // The length of the well-formed UTF-8 sequence at the current position, or 0.
  size_t utf8Length() const {
    const unsigned char lead = byte(at);
    const size_t count = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || at + count > text.size()) return 0;
    const unsigned char low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned char high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (byte(at + 1) < low || byte(at + 1) > high) return 0;
    for (size_t i = 2; i < count; ++i) {
      if ((byte(at + i) & 0xC0) != 0x80) return 0;
    }
    return count;
  }

  bool parseHex4(unsigned& code) {
    code = 0;
    for (int i = 0; i < 4; ++i) {
      const char c = static_cast<char>(byte(at++));
      const char* digit = c == '\0' ? nullptr : std::strchr("0123456789abcdef", c | 0x20);
      if (digit == nullptr) return fail("bad \\u escape");
      code = code * 16 + static_cast<unsigned>(digit - "0123456789abcdef");
    }
    return true;
  }

  bool parseEscape(std::string& out) {
    const char c = static_cast<char>(byte(at++));
    const char* simple = c == '\0' ? nullptr : std::strchr("\"\\/bfnrt", c);
    if (simple != nullptr) {
      out += "\"\\/\b\f\n\r\t"[simple - "\"\\/bfnrt"];
      return true;
    }
    unsigned code, low;
    if (c != 'u') return fail("unknown escape");
    if (!parseHex4(code)) return false;
    if (code >= 0xDC00 && code <= 0xDFFF) return fail("lone low surrogate");
    if (code >= 0xD800 && code <= 0xDBFF) {
      if (byte(at) != '\\' || byte(at + 1) != 'u') return fail("lone high surrogate");
      at += 2;
      if (!parseHex4(low) || low < 0xDC00 || low > 0xDFFF) return fail("lone high surrogate");
      code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
    }
    const int extra = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    out += static_cast<char>(extra == 0 ? code
                                        : ((0xFF00 >> (extra + 1)) & 0xFF) | code >> (6 * extra));
    for (int shift = 6 * (extra - 1); shift >= 0; shift -= 6)
      out += static_cast<char>(0x80 | (code >> shift & 0x3F));
    return true;
  }

  bool parseString(std::string& out) {
    for (++at;;) {
      const unsigned char c = byte(at);
      if (at >= text.size()) return fail("unterminated string");
      if (c == '"') return ++at, true;
      if (c < 0x20) return fail("raw control character in a string");
      const size_t length = c < 0x80 ? 1 : utf8Length();
      if (length == 0) return fail("invalid UTF-8 in a string");
      if (c == '\\') {
        ++at;
        if (!parseEscape(out)) return false;
        continue;
      }
      out.append(text, at, length);
      at += length;
    }
  }

  const std::string& text;
  size_t at = 0;
  std::string problem;
};

}  // namespace tav::test

#endif  // TAV_TEST_JSON_H
