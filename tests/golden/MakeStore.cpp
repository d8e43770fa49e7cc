// Makes an empty long-text store for the golden runs: make_store PATH.
#include <cstdio>
#include <exception>

#include "adapters/sqlite/StoreSchema.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: make_store PATH\n", stderr);
        return 2;
    }
    try {
        nomira::sqlite::CreateStore(argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_store: %s\n", error.what());
        return 1;
    }
}
