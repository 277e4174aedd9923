#include "varsentix/dbside/MessageText.h"

namespace varsentix {

MessageText& MessageText::operator=(std::string text) {
  assign(text);
  return *this;
}

void MessageText::assign(std::string_view text) {
  // The record comparison sets the same text once per record.
  if (runs_.size() == 1 && runs_[0].count == 1 && runs_[0].piece == text) return;
  runs_.clear();
  if (!text.empty()) runs_.push_back(Run{std::string(text), 1});
}

MessageText& MessageText::operator+=(std::string_view piece) {
  append(piece, 1);
  return *this;
}

void MessageText::append(std::string_view piece, uint64_t times) {
  if (piece.empty() || times == 0) return;
  if (!runs_.empty() && runs_.back().piece == piece) {
    runs_.back().count += times;
  } else {
    runs_.push_back(Run{std::string(piece), times});
  }
}

size_t MessageText::size() const {
  size_t size = 0;
  for (const auto& run : runs_) size += run.piece.size() * run.count;
  return size;
}

void MessageText::appendTo(std::string& text) const {
  text.reserve(text.size() + size());
  for (const auto& run : runs_)
    for (uint64_t i = 0; i < run.count; ++i) text += run.piece;
}

std::string MessageText::str() const {
  std::string text;
  appendTo(text);
  return text;
}

}  // namespace varsentix
