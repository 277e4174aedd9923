#pragma once
// Outcome texts and message composition shared by clsData and clsDBManager.
#include <exception>
#include <string>

#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/ResumeNext.h"

namespace varsentix::dbside {

inline constexpr const char* kSuccessfullyCompleted = "Successfully Completed";

// The failure's number, a blank and its description: "3704 Operation is not allowed ...".
inline std::string numberAndDescription(const vb::VBError& failure) {
  return vb::CStr(failure.number()) + " " + failure.description();
}
inline std::string numberAndDescription(const std::exception_ptr& failure) {
  return numberAndDescription(vb::toVBError(failure));
}

// Runs work and returns "Successfully Completed", or the failure's number and description
// followed by numberedText(). Never fails.
template <typename Work, typename NumberedText>
std::string outcomeOf(Work&& work, NumberedText&& numberedText) {
  std::string outcome = kSuccessfullyCompleted;
  try {
    work();
  } catch (...) {
    outcome = numberAndDescription(std::current_exception()) + numberedText();
  }
  return outcome;
}

}  // namespace varsentix::dbside
