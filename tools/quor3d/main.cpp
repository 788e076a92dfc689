// SPDX-License-Identifier: MIT
#include "CommandLineTool.h"
#include "GalleryCommand.h"
#include "ImportCommand.h"
#include "QUORSystem.h"

int main(int argc, char** argv) {
    QUORSystem::useConfiguredSystemScope();
    CommandLineTool tool;
    tool.add(std::make_unique<GalleryCommand>());
    tool.add(std::make_unique<ImportCommand>());
    return tool.run(argc, argv);
}
