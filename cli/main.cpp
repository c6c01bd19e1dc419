#include "cli/Program.h"

int main(int argc, char** argv) {
  return varnlog::cli::RunProgram(argc, argv, varnlog::cli::AllCommands());
}
