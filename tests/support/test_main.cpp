// The test programs' main: a named piece if the command line asks for one, else GoogleTest.
#include "support/child.h"

int main(int argc, char **argv)
{
    if (runRequestedPiece(argc, argv)) return 0;
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
