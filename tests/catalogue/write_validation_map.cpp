// write_validation_map FILE: updates the table of requests in the file.

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>

#include "tests/catalogue/validation_map.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: write_validation_map FILE\n";
    return EXIT_FAILURE;
  }
  std::ostringstream page;
  page << std::ifstream(argv[1]).rdbuf();
  try {
    const std::string text = tarnd::test::with_validation_map(page.str());
    std::ofstream(argv[1]) << text;
  } catch (const std::exception& error) {
    std::cerr << "write_validation_map: " << argv[1] << ": " << error.what() << "\n";
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
