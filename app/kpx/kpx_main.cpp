#include <cstdio>

#include "kpx/kpx_cli.h"

int main(int argc, char** argv) {
  return kelpdex::kpx::Main(argc, argv, stdout, stderr);
}
