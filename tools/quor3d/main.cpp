// SPDX-License-Identifier: MIT
#include "CheckCommand.h"
#include "CommandLineTool.h"
#include "GalleryCommand.h"
#include "ImportCommand.h"
#include "InfoCommand.h"
#include "LoopCommand.h"
#include "RenderCommand.h"
#include "ScalesCommand.h"
#include "SetCommand.h"
#include "ShowCommand.h"
#include "StatesCommand.h"
#include "StatusCommand.h"
#include "UnsetCommand.h"
#include "ViewsCommand.h"

#include "QUORSystem.h"

int main(int argc, char** argv) {
    QUORSystem::useConfiguredSystemScope();
    CommandLineTool tool;
    tool.add(std::make_unique<RenderCommand>());
    tool.add(std::make_unique<LoopCommand>());
    tool.add(std::make_unique<CheckCommand>());
    tool.add(std::make_unique<ShowCommand>());
    tool.add(std::make_unique<SetCommand>());
    tool.add(std::make_unique<UnsetCommand>());
    tool.add(std::make_unique<InfoCommand>());
    tool.add(std::make_unique<StatusCommand>());
    tool.add(std::make_unique<ViewsCommand>());
    tool.add(std::make_unique<StatesCommand>());
    tool.add(std::make_unique<ScalesCommand>());
    tool.add(std::make_unique<GalleryCommand>());
    tool.add(std::make_unique<ImportCommand>());
    return tool.run(argc, argv);
}
