// The program's own way to say how many kills: --kills N, the same as QBOBJ_KILLS=N.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; i++) {
        if (strcmp(argv[i], "--kills") != 0 || i + 1 == argc || atol(argv[i + 1]) < 1) {
            fprintf(stderr, "%s [--kills N]\n", argv[0]);
            return 2;
        }
        setenv("QBOBJ_KILLS", argv[++i], 1);
    }
    return RUN_ALL_TESTS();
}
// SPDX-License-Identifier: Apache-2.0
