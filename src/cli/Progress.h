#pragma once
// A one-line progress bar on standard error, fed by the control's UpdateCount event.
#include <cstdint>
#include <cstdio>
#include <string>

namespace varsentix {
class Varsenti;
}

namespace varsentix::cli {

class ProgressBar {
 public:
  // Draws only when enabled (standard error is a terminal).
  ProgressBar(Varsenti& control, bool enabled, std::FILE* out = stderr);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // The table the next events belong to.
  void setSubject(const std::string& subject) { subject_ = subject; }
  // Clears the line.
  void finish();

 private:
  void draw(int32_t count, int32_t maxCount, const std::string& phase);

  Varsenti& control_;
  bool enabled_;
  std::FILE* out_;
  std::string subject_;
  uint32_t cookie_ = 0;
  bool drawn_ = false;
};

}  // namespace varsentix::cli
