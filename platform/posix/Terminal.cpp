#include "platform/Terminal.h"

#include <csignal>
#include <sys/ioctl.h>
#include <unistd.h>

namespace varnlog::platform {

bool StandardErrorIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

int TerminalWidth() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

void PrepareStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace varnlog::platform
