// Progress reporting: setCurrentProgressCount and the UpdateCount event, the record-count
// properties and the engine's data-progress counters.
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <vector>

#include "engine/DataProgress.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix {
namespace {

struct Raised {
  int32_t count;
  int32_t maxCount;
  std::string readFrom;
};

// Records every UpdateCount a control raises.
struct EventLog {
  explicit EventLog(Varsenti& control) {
    control.UpdateCount.connect([this](int32_t& count, int32_t& maxCount, std::string& readFrom) {
      events.push_back({count, maxCount, readFrom});
    });
  }
  std::vector<Raised> events;
};

// Calls setCurrentProgressCount with its own variables, as the engine does.
void report(Varsenti& control, int32_t count, int32_t maxCount, std::string readFrom) {
  control.setCurrentProgressCount(count, maxCount, readFrom);
}

TEST(ControlProgress, FreshControlReportsItsInitialProgress) {
  Varsenti control;
  EXPECT_EQ(control.getCurrentProgressCount(), 1);
  EXPECT_EQ(control.getCurrentProgressCountMax(), 1);
  EXPECT_EQ(control.getTotalRecordsForTable(), -1);
  EXPECT_EQ(control.getTotalRecordsForSourceTable(), 0);
  EXPECT_EQ(control.getCurrentRecordCountMaster(), 0);
  EXPECT_EQ(control.getCurrentRecordCountSource(), 0);
  EXPECT_EQ(control.getCurrentTableName(), "");
}

TEST(ControlProgress, SetCurrentProgressCountRaisesUpdateCountAndKeepsTheMaximumAtOne) {
  Varsenti control;
  EventLog log(control);
  report(control, 5, 10, "Reading Original");
  ASSERT_EQ(log.events.size(), 1u);
  EXPECT_EQ(log.events[0].count, 5);
  EXPECT_EQ(log.events[0].maxCount, 10);
  EXPECT_EQ(log.events[0].readFrom, "Reading Original");
  EXPECT_EQ(control.getCurrentProgressCount(), 5);
  EXPECT_EQ(control.getCurrentProgressCountMax(), 1);
}

TEST(ControlProgress, WithoutHandlersTheCountIsStillStored) {
  Varsenti control;
  report(control, 42, 100, "Done");
  EXPECT_EQ(control.getCurrentProgressCount(), 42);
  EXPECT_EQ(control.getCurrentProgressCountMax(), 1);
}

TEST(ControlProgress, EveryHandlerIsCalledInOrderBeforeTheCallReturns) {
  Varsenti control;
  std::vector<std::string> calls;
  control.UpdateCount.connect([&](int32_t& c, int32_t&, std::string&) { calls.push_back("first " + std::to_string(c)); });
  control.UpdateCount.connect([&](int32_t& c, int32_t&, std::string&) { calls.push_back("second " + std::to_string(c)); });
  report(control, 3, 9, "Reading Modified");
  EXPECT_EQ(calls, (std::vector<std::string>{"first 3", "second 3"}));
}

TEST(ControlProgress, AHandlerThatChangesCountMovesTheProgressPosition) {
  Varsenti control;
  control.UpdateCount.connect([](int32_t& count, int32_t&, std::string&) { count = 77; });
  int32_t count = 5;
  int32_t maxCount = 10;
  std::string readFrom = "Compiling Differences";
  control.setCurrentProgressCount(count, maxCount, readFrom);
  EXPECT_EQ(control.getCurrentProgressCount(), 77);
  EXPECT_EQ(count, 5);  // the caller's own count was copied, not passed on
}

TEST(ControlProgress, HandlerChangesToMaxCountAndReadFromReachTheCaller) {
  Varsenti control;
  control.UpdateCount.connect([](int32_t&, int32_t& maxCount, std::string& readFrom) {
    maxCount = 500;
    readFrom = "changed by host";
  });
  int32_t count = 1;
  int32_t maxCount = 10;
  std::string readFrom = "Reading Original";
  control.setCurrentProgressCount(count, maxCount, readFrom);
  EXPECT_EQ(maxCount, 500);
  EXPECT_EQ(readFrom, "changed by host");
  EXPECT_EQ(control.getCurrentProgressCountMax(), 1);  // still not stored
}

TEST(ControlProgress, LaterHandlersSeeWhatEarlierHandlersChanged) {
  Varsenti control;
  control.UpdateCount.connect([](int32_t& count, int32_t&, std::string& readFrom) {
    count += 1;
    readFrom += "!";
  });
  Raised seen{};
  control.UpdateCount.connect([&](int32_t& count, int32_t& maxCount, std::string& readFrom) {
    seen = {count, maxCount, readFrom};
  });
  report(control, 8, 20, "Done");
  EXPECT_EQ(seen.count, 9);
  EXPECT_EQ(seen.maxCount, 20);
  EXPECT_EQ(seen.readFrom, "Done!");
  EXPECT_EQ(control.getCurrentProgressCount(), 9);
}

TEST(ControlProgress, AHandlerThatFailsFailsTheOperationThatRaisedTheEvent) {
  Varsenti control;
  bool laterHandlerCalled = false;
  control.UpdateCount.connect([](int32_t&, int32_t&, std::string&) {
    throw vb::VBError(5, "Host handler failed", "Host");
  });
  control.UpdateCount.connect([&](int32_t&, int32_t&, std::string&) { laterHandlerCalled = true; });
  try {
    report(control, 6, 10, "Reading Original");
    FAIL() << "setCurrentProgressCount returned although its event handler failed";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), 5);
    EXPECT_EQ(e.description(), "Host handler failed");
  }
  EXPECT_FALSE(laterHandlerCalled);
  EXPECT_EQ(control.getCurrentProgressCount(), 6);  // stored before the event was raised
}

TEST(ControlProgress, AHandlerThrowingAnyExceptionFailsTheCall) {
  Varsenti control;
  control.UpdateCount.connect([](int32_t&, int32_t&, std::string&) { throw std::runtime_error("boom"); });
  EXPECT_THROW(report(control, 1, 1, "Done"), std::runtime_error);
}

TEST(ControlProgress, DisconnectedHandlersAreNoLongerCalled) {
  Varsenti control;
  int calls = 0;
  const auto cookie = control.UpdateCount.connect([&](int32_t&, int32_t&, std::string&) { ++calls; });
  report(control, 1, 2, "Done");
  EXPECT_TRUE(control.UpdateCount.disconnect(cookie));
  EXPECT_FALSE(control.UpdateCount.disconnect(cookie));
  report(control, 2, 2, "Done");
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(control.UpdateCount.handlerCount(), 0u);
}

TEST(ControlProgress, AHandlerMayDisconnectItselfWhileRunning) {
  Varsenti control;
  int calls = 0;
  UpdateCountEvent::Cookie cookie = 0;
  cookie = control.UpdateCount.connect([&](int32_t&, int32_t&, std::string&) {
    ++calls;
    control.UpdateCount.disconnect(cookie);
  });
  report(control, 1, 2, "Done");
  report(control, 2, 2, "Done");
  EXPECT_EQ(calls, 1);
}

TEST(ControlProgress, EventsOfOneControlDoNotReachAnother) {
  Varsenti first;
  Varsenti second;
  EventLog log(second);
  report(first, 4, 4, "Done");
  EXPECT_TRUE(log.events.empty());
  EXPECT_EQ(second.getCurrentProgressCount(), 1);
}

TEST(ControlProgress, TestEventRaisesNothing) {
  Varsenti control;
  EventLog log(control);
  control.testEvent();
  EXPECT_TRUE(log.events.empty());
  EXPECT_EQ(control.getCurrentProgressCount(), 1);
}

TEST(ControlProgress, SetCurrentRecordCountSourceChangesNothing) {
  Varsenti control;
  control.setCurrentRecordCountSource(7);
  EXPECT_EQ(control.getCurrentRecordCountSource(), 0);
}

TEST(ControlProgress, SetCurrentRecordCountMasterStoresTheCount) {
  Varsenti control;
  control.setCurrentRecordCountMaster(7);
  EXPECT_EQ(control.getCurrentRecordCountMaster(), 7);
  EXPECT_EQ(control.getCurrentRecordCountSource(), 0);
}

TEST(ControlProgress, TableNameAndTotalsArePlainProperties) {
  Varsenti control;
  control.setCurrentTableName("Invoice");
  control.setTotalRecordsForTable(12);
  control.setTotalRecordsForSourceTable(-4);
  EXPECT_EQ(control.getCurrentTableName(), "Invoice");
  EXPECT_EQ(control.getTotalRecordsForTable(), 12);
  EXPECT_EQ(control.getTotalRecordsForSourceTable(), -4);
}

TEST(ControlProgress, ErrorMessagesForLogIsAPlainPropertyThatTheLogDoesNotRead) {
  Varsenti control;
  control.setErrorMessagesForLog("kept for the host");
  EXPECT_EQ(control.getErrorMessagesForLog(), "kept for the host");
  EXPECT_EQ(control.getErrorLogs(true), "Connection issues =Database issues General Issues ");
}

// Resets this thread's data progress when the test ends.
struct DataProgressReset {
  ~DataProgressReset() { engine::dataProgress() = {}; }
};

TEST(ControlProgress, DataProgressReportsOneAndHundredBeforeAnyComparison) {
  DataProgressReset reset;
  engine::dataProgress() = {};
  Varsenti control;
  EXPECT_EQ(control.getDataProgressStatus(), 1);
  EXPECT_EQ(control.getDataProgressStatusMax(), 100);
}

TEST(ControlProgress, DataProgressReadsWhatTheEngineWrote) {
  DataProgressReset reset;
  Varsenti control;
  engine::dataProgress().position = 7;
  engine::dataProgress().maximum = 40;
  EXPECT_EQ(control.getDataProgressStatus(), 7);
  EXPECT_EQ(control.getDataProgressStatusMax(), 40);
  engine::dataProgress().position = 0;
  EXPECT_EQ(control.getDataProgressStatus(), 1);
  EXPECT_EQ(control.getDataProgressStatusMax(), 40);
  engine::dataProgress().maximum = 0;
  EXPECT_EQ(control.getDataProgressStatusMax(), 100);
}

TEST(ControlProgress, DataProgressIsSharedByControlsOfOneThreadOnly) {
  DataProgressReset reset;
  Varsenti first;
  Varsenti second;
  engine::dataProgress() = {25, 50};
  EXPECT_EQ(second.getDataProgressStatus(), 25);
  EXPECT_EQ(second.getDataProgressStatusMax(), 50);
  int32_t otherThreadStatus = 0;
  int32_t otherThreadMax = 0;
  std::thread other([&] {
    otherThreadStatus = first.getDataProgressStatus();
    otherThreadMax = first.getDataProgressStatusMax();
  });
  other.join();
  EXPECT_EQ(otherThreadStatus, 1);
  EXPECT_EQ(otherThreadMax, 100);
}

}  // namespace
}  // namespace varsentix
