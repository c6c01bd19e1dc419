#pragma once

#include <cerrno>
#include <csignal>
#include <functional>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace varnlog::test {

/// Another process. It ends with the object at the latest.
class Child {
 public:
  /// Runs `work`; its result is the exit status.
  explicit Child(const std::function<int()>& work) : pid_(fork()) {
    if (pid_ == 0) _exit(work());
  }
  ~Child() { Kill(); }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  [[nodiscard]] bool IsRunning() const { return waitpid(pid_, nullptr, WNOHANG) == 0; }
  /// The exit status, -1 when it was killed.
  int Wait() {
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  void Kill() {
    if (pid_ < 0) return;
    kill(pid_, SIGKILL);
    Wait();
  }

 private:
  pid_t pid_;
};

/// A child that holds what `work` gives, or has taken, until it is killed.
class Holder {
 public:
  using Work = std::function<std::shared_ptr<void>()>;
  explicit Holder(const Work& work) : ready_(Pipe()), child_([&] { return Hold(work); }) {
    close(ready_.second);
    char byte = 0;
    holds_ = read(ready_.first, &byte, 1) == 1;
    close(ready_.first);
  }
  [[nodiscard]] bool Holds() const { return holds_; }

 private:
  static std::pair<int, int> Pipe() {
    int ends[2] = {-1, -1};
    return pipe(ends) == 0 ? std::pair(ends[0], ends[1]) : std::pair(-1, -1);
  }
  [[nodiscard]] int Hold(const Work& work) const {
    const std::shared_ptr<void> held = work();
    if (write(ready_.second, "r", 1) == 1) pause();
    return 1;
  }

  std::pair<int, int> ready_;
  Child child_;
  bool holds_ = false;
};

}  // namespace varnlog::test
