#include <iostream>

#include "apps/nomiractl/Nomiractl.h"

int main(int nArguments, char** arguments) {
    std::ios::sync_with_stdio(false);
    const std::vector<std::string> args(arguments + 1, arguments + nArguments);
    return static_cast<int>(nomira::companion::RunNomiractl(args, std::cout, std::cerr));
}
