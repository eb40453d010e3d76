// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

// Copies a test table in a process of its own and prints by how many KiB its memory grew at most.

#include "copies.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>

namespace
{

/// Returns the number of KiB that the kernel tells under \a name in the process's status.
long memory(const char* name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(name, 0) == 0)
            return std::atol(line.c_str() + std::strlen(name));
    std::cerr << "copytable: the kernel does not tell " << name << '\n';
    std::exit(1);
}

} // namespace

int main(int argc, char** argv)
{
    const long atStart = memory("VmRSS:");
    const auto name = std::find_if(
        std::begin(bench::copyNames), std::end(bench::copyNames),
        [&](const char* copy) { return argc == 4 && std::strcmp(argv[1], copy) == 0; });
    if (name == std::end(bench::copyNames)) {
        std::cerr << "usage: copytable identity|restructure|recode SOURCE.dbf TARGET.dbf\n";
        return 2;
    }
    try {
        bench::copyTable(static_cast<bench::Copy>(name - bench::copyNames), argv[2], argv[3]);
    } catch (const std::exception& failure) {
        std::cerr << "copytable: " << failure.what() << '\n';
        return 1;
    }
    std::cout << memory("VmHWM:") - atStart << '\n';
    return 0;
}
