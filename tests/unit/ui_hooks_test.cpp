#include <gtest/gtest.h>

#include "varsentix/platform/ui/Hooks.h"

using namespace varsentix::ui;

TEST(UiHooks, RecorderSeesEveryMessageBoxInOrder) {
  MessageBoxRecorder recorder;
  MsgBox("test 2");
  MsgBox("File Exists");
  EXPECT_EQ(recorder.texts(), (std::vector<std::string>{"test 2", "File Exists"}));
}

TEST(UiHooks, DefaultMessageBoxWritesToStandardError) {
  testing::internal::CaptureStderr();
  MsgBox("No ODBC connections were found on this system");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "No ODBC connections were found on this system\n");
}

TEST(UiHooks, RecorderPutsThePreviousHookBack) {
  std::vector<std::string> outer;
  auto previous = setMessageBoxHook([&](const std::string& t) { outer.push_back(t); });
  {
    MessageBoxRecorder inner;
    MsgBox("inner");
  }
  MsgBox("outer");
  setMessageBoxHook(previous);
  EXPECT_EQ(outer, (std::vector<std::string>{"outer"}));
}

TEST(UiHooks, DoEventsCallsTheInstalledHookOnly) {
  DoEvents();  // the default does nothing
  int calls = 0;
  setDoEventsHook([&] { ++calls; });
  DoEvents();
  setDoEventsHook({});
  DoEvents();
  EXPECT_EQ(calls, 1);
}
