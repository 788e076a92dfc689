// SPDX-License-Identifier: MIT
#include "CommandLineTool.h"

#include <CLI/CLI.hpp>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

struct Seen {
    std::vector<std::string> words;
    bool loud = false;
};

class Echo : public Subcommand {
public:
    explicit Echo(Seen& seen) : _seen(seen) {}
    std::string name() const override { return "echo"; }
    std::string summary() const override { return "Keeps its words."; }
    std::string examples() const override { return "  quor3d echo word\n"; }
    void addOptions(CLI::App& app) override {
        app.add_flag("--loud", _seen.loud, "Be loud.");
        app.add_option("word", _seen.words, "Words.")->required();
    }
    ExitStatus run() override {
        if (_seen.words.front() == "throw") {
            throw std::runtime_error("no such word");
        }
        return _seen.words.front() == "found" ? ExitStatus::Found : ExitStatus::Success;
    }

private:
    Seen& _seen;
};

} // namespace

TEST(CommandLineTool, EndsWithItsOwnStatusAndSaysWhereItsMessagesGo) {
    struct Row {
        const char* name;
        std::vector<const char*> arguments;
        int status;
        const char* out;
        const char* error;
    };
    const std::vector<Row> rows{
        {"nothing", {}, 2, "", "subcommand"},
        {"help", {"--help"}, 0, "echo", ""},
        {"version", {"--version"}, 0, "quor3d 1.", ""},
        {"help of a subcommand", {"echo", "--help"}, 0, "quor3d echo word", ""},
        {"unknown subcommand", {"sing"}, 2, "", "sing"},
        {"unknown option", {"echo", "--quiet", "word"}, 2, "", "--quiet"},
        {"missing argument", {"echo"}, 2, "", "word"},
        {"success", {"echo", "word"}, 0, "", ""},
        {"found", {"echo", "found"}, 1, "", ""},
        {"exception", {"echo", "throw"}, 1, "", "quor3d: no such word"},
        {"behind --", {"echo", "--", "--loud"}, 0, "", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Seen seen;
        CommandLineTool tool;
        tool.add(std::make_unique<Echo>(seen));
        std::vector<const char*> arguments{"quor3d"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int status = tool.run(int(arguments.size()), arguments.data());
        const std::string out = testing::internal::GetCapturedStdout();
        const std::string error = testing::internal::GetCapturedStderr();
        EXPECT_EQ(status, row.status);
        EXPECT_TRUE(*row.out == 0 ? out.empty() : out.find(row.out) != std::string::npos) << out;
        EXPECT_TRUE(*row.error == 0 ? error.empty() : error.find(row.error) != std::string::npos) << error;
        EXPECT_FALSE(seen.loud);
    }
}
