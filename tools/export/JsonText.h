// JsonText: JSON written straight into a string, member by member, indented
// by four or compact, for exports too large to build as a tree first. It
// writes what it is told in that order; the caller keeps the nesting right.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace TimelineConvert {

class JsonText {
 public:
  // `compact`: no spaces or line breaks; otherwise indented by four.
  // `discard`: write nothing at all (a dry run of a writer's checks).
  JsonText(std::string& out, bool compact, bool discard = false)
      : out_(out), compact_(compact), discard_(discard) {}

  JsonText& Key(const char* name);
  JsonText& BeginObject() { return Open('{'); }
  JsonText& EndObject() { return Close('}'); }
  JsonText& BeginArray() { return Open('['); }
  JsonText& EndArray() { return Close(']'); }
  JsonText& String(const std::string& text);
  JsonText& Integer(std::int64_t value);
  // A number as the format's readers expect a real: 50.0, 29.97002997002997.
  JsonText& Real(double value);
  JsonText& Bool(bool value);
  JsonText& Null();
  // Appends the members of an object already open (or a value after Key).
  JsonText& Member(const char* name, const std::string& text) { return Key(name).String(text); }
  JsonText& Member(const char* name, std::int64_t value) { return Key(name).Integer(value); }

 private:
  JsonText& Open(char bracket);
  JsonText& Close(char bracket);
  // Before a value: the separator and indentation it needs, unless it follows a key.
  void BeforeValue();
  void NewLine(std::size_t depth);

  std::string& out_;
  bool compact_;
  bool discard_;
  bool afterKey_ = false;
  std::vector<bool> empty_;  // per open container: nothing written in it yet
};

// `text` as a JSON string literal; bytes that are not UTF-8 become U+FFFD.
void AppendJsonString(std::string& out, const std::string& text);

}  // namespace TimelineConvert
