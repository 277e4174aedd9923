// Varsenti: the option properties and their set* twins.
#include "varsentix/control/Varsenti.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix {
namespace {

// How deep the pathForErrLog let may invoke itself before the call fails as a stack overflow
// would: with error 28 "Out of stack space". Kept small so that the recursion fits in any
// thread's stack.
constexpr int kLetDepthLimit = 256;
thread_local int letDepth = 0;

// Counts one level of the let's self-invocation for as long as that level runs.
class LetDepth {
 public:
  LetDepth() { ++letDepth; }
  ~LetDepth() { --letDepth; }
  LetDepth(const LetDepth&) = delete;
  LetDepth& operator=(const LetDepth&) = delete;
};

}  // namespace

void Varsenti::setshowDifferencesOnly(const bool& showDifferecesIn) {
  showDifferencesOnly_ = showDifferecesIn;
}

void Varsenti::setShowDataOnly(const bool& showDataOnlyIn) { showDataOnly_ = showDataOnlyIn; }

void Varsenti::setLogErrors(const bool& m_logErrorsIn) { logErrors_ = m_logErrorsIn; }

void Varsenti::saveToXML(const bool& /*value: ignored*/) { saveToXML_ = saveToXML_; }

// The self-invocation is the let's contract; the depth limit is what ends it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winfinite-recursion"
void Varsenti::pathForErrLog(const std::string& value) {
  if (letDepth >= kLetDepthLimit) vb::raiseError(vb::errnum::OutOfStackSpace);
  const LetDepth level;
  const std::string path = value;
  pathForErrLog(path);  // the let assigns the property, which is itself: it never ends
}
#pragma GCC diagnostic pop

void Varsenti::setPathForErrLog(const std::string& pathforErrLogIn) {
  const std::string path = pathforErrLogIn;
  pathForErrLog(path);
}

}  // namespace varsentix
