#include <iostream>

#include "apps/vexon3/Vexon3.h"

int main(int nArguments, char** arguments) {
    const std::vector<std::string> args(arguments + std::min(nArguments, 1),
                                        arguments + nArguments);
    return static_cast<int>(nomira::simulator::RunVexon3(args, std::cout, std::cerr));
}
