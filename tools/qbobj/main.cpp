#include "command_line.h"

int main(int argc, char **argv)
{
    return qbcli::run({argv + 1, argv + argc});
}
// SPDX-License-Identifier: Apache-2.0
