// Runs the tests. Instead, --digest prints what identifies all outputs of the library, --shaders DIRECTORY writes
// programs made of all pieces of GLSL, --shader-table prints the table of these, and --parity that of how far the GPU
// is apart.
#include <gpgpu/ShaderPrograms.h>
#include <reference/Digest.h>
#include <reference/Parity.h>

#include <gtest/gtest.h>

#include <cstring>

int main(int argc, char** argv)
{
    if (argc > 1 && std::strcmp(argv[1], "--digest") == 0) {
        reference::printDigests();
        return 0;
    }
    if (argc > 2 && std::strcmp(argv[1], "--shaders") == 0)
        return shaders::writePrograms(argv[2]);
    if (argc > 1 && std::strcmp(argv[1], "--shader-table") == 0) {
        shaders::printTable();
        return 0;
    }
    if (argc > 1 && std::strcmp(argv[1], "--parity") == 0)
        return reference::printParity();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
