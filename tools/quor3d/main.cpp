// SPDX-License-Identifier: MIT
#include "CommandLineTool.h"

#include "QUORSystem.h"

int main(int argc, char** argv) {
    QUORSystem::useConfiguredSystemScope();
    CommandLineTool tool;
    return tool.run(argc, argv);
}
