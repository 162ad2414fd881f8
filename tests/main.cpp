// Runs the tests; with --digest prints what identifies all outputs of the library instead.
#include <reference/Digest.h>

#include <gtest/gtest.h>

#include <cstring>

int main(int argc, char** argv)
{
    if (argc > 1 && std::strcmp(argv[1], "--digest") == 0) {
        reference::printDigests();
        return 0;
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
