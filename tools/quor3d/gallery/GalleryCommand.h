// SPDX-License-Identifier: MIT
#pragma once

#include "Subcommand.h"

class Gallery;

/// `quor3d gallery`: a page that shows the pictures of a folder.
class GalleryCommand : public Subcommand {
public:
    std::string name() const override { return "gallery"; }
    std::string summary() const override {
        return "Write a page that shows the pictures of a folder, and keep it up to date.";
    }
    std::string examples() const override;
    void addOptions(CLI::App& app) override;
    ExitStatus run() override;

private:
    ExitStatus writeOnce(Gallery& gallery) const;
    ExitStatus follow(Gallery& gallery) const;

    std::string _pictures;
    std::string _page;
    std::string _title = "Radar pictures";
    std::string _copies = "webp";
    std::size_t _most = 1000;
    int _refresh = 5;
    bool _watch = false;
};
