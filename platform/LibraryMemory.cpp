#include "platform/LibraryMemory.h"

#include <cstdlib>
#include <new>

#include <unicode/uclean.h>

namespace varnlog::platform {

namespace {

// A handler either ends the program or frees something; one that throws would not get through the library.
template <typename Ask>
void* AskUntilGiven(const Ask& ask) {
  while (true) {
    if (void* const block = ask()) return block;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) return nullptr;
    handler();
  }
}

void* Allocate(const void* /*context*/, std::size_t size) {
  return AskUntilGiven([size] { return std::malloc(size); });
}

void* Reallocate(const void* /*context*/, void* block, std::size_t size) {
  return AskUntilGiven([block, size] { return std::realloc(block, size); });
}

void Free(const void* /*context*/, void* block) {
  std::free(block);
}

}  // namespace

void GuardLibraryMemory() {
  UErrorCode status = U_ZERO_ERROR;
  u_setMemoryFunctions(nullptr, Allocate, Reallocate, Free, &status);
}

}  // namespace varnlog::platform
