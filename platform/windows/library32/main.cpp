#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <string>

// The first one is what the other needs.
// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

// Asks the imaging suite's library on behalf of a 64-bit program, which cannot load one of 32 bits: the only
// argument is the library's path, the current folder is the suite's, the answer goes to standard output byte
// for byte. Ends with 0, or with 1 when there is no answer.

namespace {

constexpr int kBufferSize = 261;
constexpr int kBytesOffered = 259;

// Whether the library takes its arguments off the stack or leaves that to its caller is not known, and 32-bit
// programs differ in it. So the stack is put back here, from a register that both kinds of functions keep.
int Call(FARPROC function, const std::array<std::uintptr_t, 5>& arguments) {
  int result = 0;
  __asm__ volatile(
      "movl %%esp, %%esi\n\t"
      "andl $-16, %%esp\n\t"
      "subl $12, %%esp\n\t"
      "pushl 16(%%edi)\n\t"
      "pushl 12(%%edi)\n\t"
      "pushl 8(%%edi)\n\t"
      "pushl 4(%%edi)\n\t"
      "pushl (%%edi)\n\t"
      "call *%%ebx\n\t"
      "movl %%esi, %%esp"
      : "=a"(result)
      : "b"(function), "D"(arguments.data())
      : "esi", "ecx", "edx", "memory", "cc");
  return result;
}

// A function that takes its arguments off the stack has their size in its name, unless its maker has taken
// that out; some compilers put a line before it.
FARPROC Find(HMODULE library, const std::string& name, const std::string& size) {
  for (const std::string& each : {name, "_" + name + size, name + size}) {
    FARPROC const found = GetProcAddress(library, each.c_str());
    if (found != nullptr) return found;
  }
  return nullptr;
}

bool Ask(HMODULE library, std::array<char, kBufferSize>& answer) {
  FARPROC const open = Find(library, "FDB_Open", "@0");
  FARPROC const info = Find(library, "FDB_GetDataBaseInfo", "@20");
  FARPROC const close = Find(library, "FDB_Close", "@0");
  if (open == nullptr || info == nullptr || close == nullptr) return false;
  const bool answered = Call(open, {}) == 0 && Call(info, {reinterpret_cast<std::uintptr_t>(answer.data()),
                                                           kBytesOffered, 0, 0, 0}) == 0;
  Call(close, {});
  answer.back() = '\0';
  return answered;
}

}  // namespace

int main() {
  int count = 0;
  wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
  if (arguments == nullptr || count != 2) return EXIT_FAILURE;
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
  HMODULE const library = LoadLibraryExW(arguments[1], nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  std::array<char, kBufferSize> answer{};
  if (library == nullptr || !Ask(library, answer)) return EXIT_FAILURE;
  _setmode(_fileno(stdout), _O_BINARY);
  return std::fputs(answer.data(), stdout) >= 0 && std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
