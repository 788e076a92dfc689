// SPDX-License-Identifier: MIT
#include "ScratchHome.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <clocale>

/// Every test program runs under a home of its own and without a display.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const ScratchHome home;
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    return RUN_ALL_TESTS();
}
