#pragma once
// A side's message text. The record comparison appends the same outcome (" Successfully
// Completed ||") once per record it looks up, so a table of a million records leaves a message of
// tens of megabytes. The text is kept as runs of repeated pieces: appending the piece the text
// already ends with only counts it, and the whole text is built only when it is read.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace varsentix {

class MessageText {
 public:
  MessageText() = default;
  MessageText& operator=(std::string text);
  // The same, without copying the text when the message already is that text.
  void assign(std::string_view text);
  MessageText& operator+=(std::string_view piece);
  // piece appended times times over.
  void append(std::string_view piece, uint64_t times);
  void clear() { runs_.clear(); }
  bool empty() const { return runs_.empty(); }
  // The whole text.
  std::string str() const;
  // Its length, and the text appended to another, without building it on its own.
  size_t size() const;
  void appendTo(std::string& text) const;

 private:
  struct Run {
    std::string piece;
    uint64_t count = 1;
  };
  std::vector<Run> runs_;
};

}  // namespace varsentix
