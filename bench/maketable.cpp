// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "testtable.h"

#include <cstdlib>
#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    const int records = argc == 3 ? std::atoi(argv[2]) : 0;
    if (records <= 0) {
        std::cerr << "usage: maketable FILE.dbf RECORDS\n";
        return 2;
    }
    try {
        bench::writeTestTable(argv[1], records);
    } catch (const std::exception& failure) {
        std::cerr << "maketable: " << failure.what() << '\n';
        return 1;
    }
    return 0;
}
