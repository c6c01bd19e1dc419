#include "platform/Terminal.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>

#include "platform/windows/System.h"

namespace varnlog::platform {
namespace {

UINT pageBefore = 0;

}  // namespace

bool StandardErrorIsTerminal() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

int TerminalWidth() {
  constexpr int kUsual = 80;
  CONSOLE_SCREEN_BUFFER_INFO information{};
  if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &information) == FALSE) return kUsual;
  const int width = information.srWindow.Right - information.srWindow.Left + 1;
  return width > 0 ? width : kUsual;
}

void PrepareStandardStreams() {
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
  for (const DWORD stream : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
    HANDLE console = GetStdHandle(stream);
    DWORD mode = 0;
    if (GetConsoleMode(console, &mode) != FALSE)
      SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  }
  // The console outlives this program; the next one finds it as it was.
  pageBefore = GetConsoleOutputCP();
  if (pageBefore == 0 || pageBefore == CP_UTF8 || SetConsoleOutputCP(CP_UTF8) == FALSE) return;
  std::atexit([] { SetConsoleOutputCP(pageBefore); });
}

}  // namespace varnlog::platform
