#include "platform/HostLookUp.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/HostAddresses.h"

namespace varnlog::platform {

struct HostLookUp::State {
  std::mutex mutex;
  std::condition_variable over;
  bool isOver = false;
  HostAddresses found;
};

HostLookUp::HostLookUp(std::string host) : state_(std::make_shared<State>()) {
  std::thread([state = state_, name = std::move(host)] {
    HostAddresses found = AddressesOf(name);
    const std::lock_guard lock(state->mutex);
    state->found = std::move(found);
    state->isOver = true;
    state->over.notify_all();
  }).detach();
}

bool HostLookUp::Await(std::chrono::milliseconds most) const {
  std::unique_lock lock(state_->mutex);
  return state_->over.wait_for(lock, most, [this] { return state_->isOver; });
}

const std::vector<std::string>& HostLookUp::Addresses() const {
  return state_->found.addresses;
}
const std::string& HostLookUp::Error() const {
  return state_->found.error;
}

}  // namespace varnlog::platform
