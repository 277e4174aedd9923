#pragma once
// The control's outgoing event UpdateCount(count, maxCount, readFrom): a list of host handlers
// called synchronously, in the order they were connected, with the arguments by reference.
#include <cstdint>
#include <functional>
#include <memory>
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
    auto changed = std::make_shared<List>(*handlers_);
    changed->emplace_back(++lastCookie_, std::move(handler));
    handlers_ = std::move(changed);
    return lastCookie_;
  }
  // Returns false when the cookie names no connected handler.
  bool disconnect(Cookie cookie) {
    auto changed = std::make_shared<List>(*handlers_);
    const auto gone = std::erase_if(*changed, [&](const auto& entry) { return entry.first == cookie; });
    if (gone == 0) return false;
    handlers_ = std::move(changed);
    return true;
  }
  size_t handlerCount() const noexcept { return handlers_->size(); }

  // Calls every handler connected when the raise began. A handler that throws ends the raise:
  // the failure leaves raise() and fails the operation that raised the event.
  void raise(int32_t& count, int32_t& maxCount, std::string& readFrom) const {
    // The list is replaced, never changed, so handlers may connect or disconnect while running.
    const std::shared_ptr<const List> handlers = handlers_;
    for (const auto& entry : *handlers) {
      if (entry.second) entry.second(count, maxCount, readFrom);
    }
  }

 private:
  using List = std::vector<std::pair<Cookie, Handler>>;
  std::shared_ptr<const List> handlers_ = std::make_shared<const List>();
  Cookie lastCookie_ = 0;
};

}  // namespace varsentix
