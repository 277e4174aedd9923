#pragma once
// Process-wide stand-ins for the modal message box and DoEvents. Headless by default: a message
// box writes its text and a newline to standard error and returns; DoEvents does nothing.
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace varsentix::ui {

using MessageBoxHook = std::function<void(const std::string& text)>;
using DoEventsHook = std::function<void()>;

// Shows a message box with an OK button and the default title: calls the installed hook.
void MsgBox(const std::string& text);
// Lets the host's pending messages be processed once: calls the installed hook.
void DoEvents();

// Install a hook; an empty function restores the default. Returns the hook it replaces.
MessageBoxHook setMessageBoxHook(MessageBoxHook hook);
DoEventsHook setDoEventsHook(DoEventsHook hook);

// Records every message box text while it lives (then puts the previous hook back).
class MessageBoxRecorder {
 public:
  MessageBoxRecorder();
  ~MessageBoxRecorder();
  MessageBoxRecorder(const MessageBoxRecorder&) = delete;
  MessageBoxRecorder& operator=(const MessageBoxRecorder&) = delete;

  std::vector<std::string> texts() const;
  void clear();

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> texts_;
  MessageBoxHook previous_;
};

}  // namespace varsentix::ui
