// cwb: the vendor command-line client of ICwbService.
#include <cstdio>

#include "CwbMain.h"

int main(int argc, char** argv) {
    return cwbtool::cwbMain(argc, argv, stdout, stderr);
}
