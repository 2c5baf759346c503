#include "QvrCommandLine.h"

int main(int argc, char** argv) {
    return QvrCommandLine::Run(argc, argv);
}
