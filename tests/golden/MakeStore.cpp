// The message database for the golden runs.
//
// make_store PATH FORMAT [SCRIPT]: makes it, and runs the SQL of the file.
// make_store --rows PATH QUERY: the rows of a query, the fields ended by 0x1F and the rows by 0x1E.
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "testing/TestDatabase.h"

namespace {

using nomira::testing::ExecuteOn;
using nomira::testing::QueryOn;
using nomira::testing::StoreFormat;

StoreFormat FormatOf(const std::string& sWord) {
    if (sWord == "sqlite") return StoreFormat::Sqlite;
    if (sWord == "jet3") return StoreFormat::Jet3;
    if (sWord == "jet4") return StoreFormat::Jet4;
    throw std::runtime_error("no such format: " + sWord);
}

void RunScript(const std::string& sDatabase, const std::string& sScript) {
    std::ifstream in(sScript, std::ios::binary);
    ExecuteOn(sDatabase, {std::istreambuf_iterator<char>(in), {}});
}

void PrintRows(const std::string& sDatabase, const std::string& sQuery) {
    for (const auto& row : QueryOn(sDatabase, sQuery)) {
        for (const std::string& sField : row)
            std::cout << sField << '\x1F';
        std::cout << '\x1E';
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3 || argc > 4) {
        std::fputs("usage: make_store PATH FORMAT [SCRIPT] | make_store --rows PATH QUERY\n",
                   stderr);
        return 2;
    }
    try {
        if (std::string(argv[1]) == "--rows") {
            PrintRows(argv[2], argc == 4 ? argv[3] : "");
            return 0;
        }
        nomira::sqlite::CreateStore(argv[1], FormatOf(argv[2]));
        if (argc == 4) RunScript(argv[1], argv[3]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_store: %s\n", error.what());
        return 1;
    }
}
