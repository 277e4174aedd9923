#include "cli/Progress.h"

#include "cli/TextSafety.h"
#include "varsentix/control/Varsenti.h"

namespace varsentix::cli {

ProgressBar::ProgressBar(Varsenti& control, bool enabled, std::FILE* out)
    : control_(control), enabled_(enabled), out_(out) {
  if (!enabled_) return;
  cookie_ = control_.UpdateCount.connect(
      [this](int32_t& count, int32_t& maxCount, std::string& readFrom) { draw(count, maxCount, readFrom); });
}

ProgressBar::~ProgressBar() {
  finish();
  if (cookie_ != 0) control_.UpdateCount.disconnect(cookie_);
}

void ProgressBar::draw(int32_t count, int32_t maxCount, const std::string& phase) {
  constexpr int kWidth = 30;
  const double fraction = maxCount > 0 ? std::min(1.0, std::max(0.0, double(count) / maxCount)) : 0.0;
  const int filled = static_cast<int>(fraction * kWidth);
  std::string bar(static_cast<size_t>(filled), '=');
  bar.resize(kWidth, ' ');
  // The table's name as the report shows it: its control characters are not sent to the terminal.
  const std::string subject = escapedForTerminal(subject_);
  std::fprintf(out_, "\r\x1b[K%s %s [%s] %d/%d", phase.c_str(), subject.c_str(), bar.c_str(), count, maxCount);
  std::fflush(out_);
  drawn_ = true;
}

void ProgressBar::finish() {
  if (!drawn_) return;
  std::fprintf(out_, "\r\x1b[K");
  std::fflush(out_);
  drawn_ = false;
}

}  // namespace varsentix::cli
