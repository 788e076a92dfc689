// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QCoreApplication>
#include <QProcess>

#include <gtest/gtest.h>

/// The colour within a tolerance.
inline testing::AssertionResult isColor(const QColor& actual, int r, int g, int b, int tolerance = 2) {
    const bool same = std::abs(actual.red() - r) <= tolerance && std::abs(actual.green() - g) <= tolerance &&
                      std::abs(actual.blue() - b) <= tolerance;
    return (same ? testing::AssertionSuccess() : testing::AssertionFailure())
           << qPrintable(actual.name()) << " against " << r << ", " << g << ", " << b;
}

/// Runs tests of this program in a process of its own with an environment of its own: success when they
/// passed, and none was skipped.
inline testing::AssertionResult passesAlone(const char* filter, const QStringList& environment) {
    QProcess child;
    child.setEnvironment(environment);
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QStringLiteral("/proc/%1/exe").arg(QCoreApplication::applicationPid()),
                {QStringLiteral("--gtest_also_run_disabled_tests"),
                 QStringLiteral("--gtest_filter=%1").arg(QLatin1String(filter))});
    const bool ended = child.waitForFinished(60000) && child.exitStatus() == QProcess::NormalExit;
    const QByteArray output = child.readAll();
    const bool passed = ended && child.exitCode() == 0 && output.contains("[  PASSED  ] ") &&
                        !output.contains("[  PASSED  ] 0") && !output.contains("[  SKIPPED ]");
    return passed ? testing::AssertionSuccess() : testing::AssertionFailure() << output.constData();
}
