// Varsenti: progress reporting through UpdateCount, and the record-count properties.
#include "engine/DataProgress.h"
#include "varsentix/control/Varsenti.h"

namespace varsentix {

void Varsenti::setCurrentProgressCount(int32_t& currentProgressCountIn,
                                       int32_t& currentProgressCountMaxIn, std::string& readingFrom) {
  currentProgressCount_ = currentProgressCountIn;
  // The member itself is the event's count: a handler that changes it moves the position.
  UpdateCount.raise(currentProgressCount_, currentProgressCountMaxIn, readingFrom);
}

void Varsenti::setCurrentRecordCountSource(const int32_t& currentRecordCountSourceIn) {
  int32_t discarded = currentRecordCountSourceIn;  // the member is not written, deliberately
  static_cast<void>(discarded);
}

void Varsenti::testEvent() {}

int32_t Varsenti::getDataProgressStatus() const {
  const int32_t position = engine::dataProgress().position;
  return position == 0 ? 1 : position;
}

int32_t Varsenti::getDataProgressStatusMax() const {
  const int32_t maximum = engine::dataProgress().maximum;
  return maximum == 0 ? 100 : maximum;
}

}  // namespace varsentix
