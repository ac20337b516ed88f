// cwb-sim: plays a session against the CWB service on a simulated phone.
#include <iostream>
#include <string>
#include <vector>

#include "Simulator.h"

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    return cwbsim::Simulator::main(args, std::cin, std::cout, std::cerr);
}
