// tav_test_json.h - a small strict JSON parser for checking what the library writes.
//
// It accepts exactly RFC 8259 JSON: one value with optional blanks (space, tab, line feed,
// carriage return) around it; strings of valid UTF-8 without raw control characters, with the
// escapes \" \\ \/ \b \f \n \r \t and \uXXXX (surrogates only in proper pairs); numbers without
// leading zeros, "+" or a bare "."; no trailing commas, comments or other extensions. Nesting
// deeper than kMaxDepth is refused rather than followed. Header-only, so that the fuzz targets
// can use it without the test support library.

#ifndef TAV_TEST_JSON_H
#define TAV_TEST_JSON_H

#include <cstddef>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace tav::test {

struct JsonValue {
  enum Kind { kNull, kBool, kNumber, kString, kArray, kObject } kind = kNull;
  bool boolean = false;
  double number = 0;
  std::string text;  // the string, UTF-8, escapes resolved; a number's text as written
  std::vector<JsonValue> items;
  std::vector<std::pair<std::string, JsonValue>> members;

  // The member named name, or null.
  const JsonValue* find(const std::string& name) const {
    for (const auto& member : members) {
      if (member.first == name) return &member.second;
    }
    return nullptr;
  }
};

class JsonParser {
 public:
  static constexpr int kMaxDepth = 200;

  // True when text is one valid JSON value; *value gets it. *error says what went wrong where.
  static bool parse(const std::string& text, JsonValue* value, std::string* error = nullptr) {
    JsonParser parser(text);
    JsonValue scratch;
    JsonValue& target = value != nullptr ? *value : scratch;
    parser.skipBlanks();
    bool ok = parser.parseValue(target, 0);
    parser.skipBlanks();
    if (ok && parser.at != text.size()) ok = parser.fail("text after the value");
    if (!ok && error != nullptr) *error = parser.message + " at byte " + std::to_string(parser.at);
    return ok;
  }

 private:
  explicit JsonParser(const std::string& text) : text(text) {}

  bool fail(const char* what) {
    if (message.empty()) message = what;
    return false;
  }
  bool atEnd() const { return at >= text.size(); }
  unsigned char peek() const { return atEnd() ? 0 : static_cast<unsigned char>(text[at]); }
  void skipBlanks() {
    while (!atEnd() && (peek() == ' ' || peek() == '\t' || peek() == '\n' || peek() == '\r')) ++at;
  }
  bool literal(const char* word) {
    const std::string expected(word);
    if (text.compare(at, expected.size(), expected) != 0) return fail("unknown literal");
    at += expected.size();
    return true;
  }

  bool parseValue(JsonValue& value, int depth) {
    if (depth > kMaxDepth) return fail("nesting too deep");
    switch (peek()) {
      case '{': return parseObject(value, depth);
      case '[': return parseArray(value, depth);
      case '"': value.kind = JsonValue::kString; return parseString(value.text);
      case 't':
        value.kind = JsonValue::kBool;
        value.boolean = true;
        return literal("true");
      case 'f': value.kind = JsonValue::kBool; return literal("false");
      case 'n': value.kind = JsonValue::kNull; return literal("null");
      default: return parseNumber(value);
    }
  }

  bool parseObject(JsonValue& value, int depth) {
    value.kind = JsonValue::kObject;
    ++at;
    skipBlanks();
    if (peek() == '}') {
      ++at;
      return true;
    }
    for (;;) {
      std::pair<std::string, JsonValue> member;
      if (peek() != '"') return fail("expected a member name");
      if (!parseString(member.first)) return false;
      skipBlanks();
      if (peek() != ':') return fail("expected ':'");
      ++at;
      skipBlanks();
      if (!parseValue(member.second, depth + 1)) return false;
      value.members.push_back(std::move(member));
      skipBlanks();
      if (peek() == '}') {
        ++at;
        return true;
      }
      if (peek() != ',') return fail("expected ',' or '}'");
      ++at;
      skipBlanks();
    }
  }

  bool parseArray(JsonValue& value, int depth) {
    value.kind = JsonValue::kArray;
    ++at;
    skipBlanks();
    if (peek() == ']') {
      ++at;
      return true;
    }
    for (;;) {
      value.items.emplace_back();
      if (!parseValue(value.items.back(), depth + 1)) return false;
      skipBlanks();
      if (peek() == ']') {
        ++at;
        return true;
      }
      if (peek() != ',') return fail("expected ',' or ']'");
      ++at;
      skipBlanks();
    }
  }

  bool parseNumber(JsonValue& value) {
    const size_t start = at;
    if (peek() == '-') ++at;
    if (peek() == '0') {
      ++at;
    } else if (peek() >= '1' && peek() <= '9') {
      while (peek() >= '0' && peek() <= '9') ++at;
    } else {
      return fail("expected a value");
    }
    if (peek() == '.') {
      ++at;
      if (!(peek() >= '0' && peek() <= '9')) return fail("expected a digit after '.'");
      while (peek() >= '0' && peek() <= '9') ++at;
    }
    if (peek() == 'e' || peek() == 'E') {
      ++at;
      if (peek() == '+' || peek() == '-') ++at;
      if (!(peek() >= '0' && peek() <= '9')) return fail("expected an exponent");
      while (peek() >= '0' && peek() <= '9') ++at;
    }
    value.kind = JsonValue::kNumber;
    value.text = text.substr(start, at - start);
    value.number = std::strtod(value.text.c_str(), nullptr);
    return true;
  }

  bool parseHex4(unsigned& code) {
    code = 0;
    for (int i = 0; i < 4; ++i, ++at) {
      const unsigned char c = peek();
      unsigned digit;
      if (c >= '0' && c <= '9') {
        digit = c - '0';
      } else if (c >= 'a' && c <= 'f') {
        digit = c - 'a' + 10;
      } else if (c >= 'A' && c <= 'F') {
        digit = c - 'A' + 10;
      } else {
        return fail("bad \\u escape");
      }
      code = code * 16 + digit;
    }
    return true;
  }

  static void appendUtf8(std::string& out, unsigned code) {
    if (code < 0x80) {
      out += static_cast<char>(code);
    } else if (code < 0x800) {
      out += static_cast<char>(0xC0 | code >> 6);
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      out += static_cast<char>(0xE0 | code >> 12);
      out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | code >> 18);
      out += static_cast<char>(0x80 | (code >> 12 & 0x3F));
      out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    }
  }

  // A well-formed UTF-8 sequence at the current position: its length, or 0.
  size_t utf8Length() const {
    const unsigned char lead = peek();
    size_t count;
    unsigned char low = 0x80, high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
      count = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      count = 3;
      if (lead == 0xE0) low = 0xA0;
      if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      count = 4;
      if (lead == 0xF0) low = 0x90;
      if (lead == 0xF4) high = 0x8F;
    } else {
      return 0;
    }
    if (at + count > text.size()) return 0;
    for (size_t i = 1; i < count; ++i) {
      const unsigned char c = static_cast<unsigned char>(text[at + i]);
      if (c < (i == 1 ? low : 0x80) || c > (i == 1 ? high : 0xBF)) return 0;
    }
    return count;
  }

  bool parseString(std::string& out) {
    ++at;  // the opening quote
    for (;;) {
      if (atEnd()) return fail("unterminated string");
      const unsigned char c = peek();
      if (c == '"') {
        ++at;
        return true;
      }
      if (c < 0x20) return fail("raw control character in a string");
      if (c >= 0x80) {
        const size_t length = utf8Length();
        if (length == 0) return fail("invalid UTF-8 in a string");
        out.append(text, at, length);
        at += length;
        continue;
      }
      if (c != '\\') {
        out += static_cast<char>(c);
        ++at;
        continue;
      }
      ++at;
      const unsigned char escape = peek();
      ++at;
      switch (escape) {
        case '"': out += '"'; break;
        case '\\': out += '\\'; break;
        case '/': out += '/'; break;
        case 'b': out += '\b'; break;
        case 'f': out += '\f'; break;
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case 'u': {
          unsigned code;
          if (!parseHex4(code)) return false;
          if (code >= 0xDC00 && code <= 0xDFFF) return fail("lone low surrogate");
          if (code >= 0xD800 && code <= 0xDBFF) {
            unsigned low;
            if (peek() != '\\' || (++at, peek() != 'u')) return fail("lone high surrogate");
            ++at;
            if (!parseHex4(low)) return false;
            if (low < 0xDC00 || low > 0xDFFF) return fail("lone high surrogate");
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
          }
          appendUtf8(out, code);
          break;
        }
        default: return fail("unknown escape");
      }
    }
  }

  const std::string& text;
  size_t at = 0;
  std::string message;
};

}  // namespace tav::test

#endif  // TAV_TEST_JSON_H
