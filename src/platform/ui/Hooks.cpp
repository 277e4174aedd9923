#include "varsentix/platform/ui/Hooks.h"

#include <cstdio>

namespace varsentix::ui {
namespace {

std::mutex& hookMutex() {
  static std::mutex m;
  return m;
}
MessageBoxHook& messageBoxHook() {
  static MessageBoxHook hook;
  return hook;
}
DoEventsHook& doEventsHook() {
  static DoEventsHook hook;
  return hook;
}

}  // namespace

void MsgBox(const std::string& text) {
  MessageBoxHook hook;
  {
    std::lock_guard lock(hookMutex());
    hook = messageBoxHook();
  }
  if (hook) {
    hook(text);
  } else {
    std::fprintf(stderr, "%s\n", text.c_str());
  }
}

void DoEvents() {
  DoEventsHook hook;
  {
    std::lock_guard lock(hookMutex());
    hook = doEventsHook();
  }
  if (hook) hook();
}

MessageBoxHook setMessageBoxHook(MessageBoxHook hook) {
  std::lock_guard lock(hookMutex());
  std::swap(messageBoxHook(), hook);
  return hook;
}

DoEventsHook setDoEventsHook(DoEventsHook hook) {
  std::lock_guard lock(hookMutex());
  std::swap(doEventsHook(), hook);
  return hook;
}

MessageBoxRecorder::MessageBoxRecorder() {
  previous_ = setMessageBoxHook([this](const std::string& text) {
    std::lock_guard lock(mutex_);
    texts_.push_back(text);
  });
}

MessageBoxRecorder::~MessageBoxRecorder() { setMessageBoxHook(std::move(previous_)); }

std::vector<std::string> MessageBoxRecorder::texts() const {
  std::lock_guard lock(mutex_);
  return texts_;
}

void MessageBoxRecorder::clear() {
  std::lock_guard lock(mutex_);
  texts_.clear();
}

}  // namespace varsentix::ui
