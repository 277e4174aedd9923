#pragma once
// The control's outgoing event UpdateCount(count, maxCount, readFrom): a list of host handlers
// called synchronously, in the order they were connected, with the arguments by reference.
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace varsentix {

class UpdateCountEvent {
 public:
  // A handler may change any argument; the one who raised the event sees the change.
  using Handler = std::function<void(int32_t& count, int32_t& maxCount, std::string& readFrom)>;
  // Names one connection, for disconnect. 0 is never handed out.
  using Cookie = uint32_t;

  Cookie connect(Handler handler) {
    handlers_.emplace_back(++lastCookie_, std::move(handler));
    return lastCookie_;
  }
  // Returns false when the cookie names no connected handler.
  bool disconnect(Cookie cookie) {
    for (auto it = handlers_.begin(); it != handlers_.end(); ++it) {
      if (it->first == cookie) {
        handlers_.erase(it);
        return true;
      }
    }
    return false;
  }
  size_t handlerCount() const noexcept { return handlers_.size(); }

  // Calls every handler connected when the raise began. A handler that throws ends the raise:
  // the failure leaves raise() and fails the operation that raised the event.
  void raise(int32_t& count, int32_t& maxCount, std::string& readFrom) const {
    const auto handlers = handlers_;  // handlers may connect or disconnect while running
    for (const auto& entry : handlers) {
      if (entry.second) entry.second(count, maxCount, readFrom);
    }
  }

 private:
  std::vector<std::pair<Cookie, Handler>> handlers_;
  Cookie lastCookie_ = 0;
};

}  // namespace varsentix
