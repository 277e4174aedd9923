#pragma once
// Control flow of the skip-and-continue style as the comparison routines were written: a failed
// step is passed over, and an If whose condition fails runs its Then branch (Resume Next carries
// on with the statement after the condition, which is the first one of the branch).
#include <utility>

#include "varsentix/platform/vb/ResumeNext.h"

namespace varsentix::engine {

// Runs thenBranch when condition() is true or fails; elseBranch when it is false. Every step of
// either branch runs under onError too (each branch is one step: the caller splits it finer
// where the order of failures matters).
template <typename Condition, typename Then, typename Else>
void ifResumeNext(vb::ResumeNext& onError, Condition&& condition, Then&& thenBranch,
                  Else&& elseBranch) {
  bool value = true;
  onError([&] { value = condition(); });
  if (value) {
    std::forward<Then>(thenBranch)();
  } else {
    std::forward<Else>(elseBranch)();
  }
}

template <typename Condition, typename Then>
void ifResumeNext(vb::ResumeNext& onError, Condition&& condition, Then&& thenBranch) {
  ifResumeNext(onError, std::forward<Condition>(condition), std::forward<Then>(thenBranch), [] {});
}

}  // namespace varsentix::engine
