// SPDX-License-Identifier: MIT
#include "QUORViewerSession.h"

#include "QUORTimeList.h"
#include "ScratchHome.h"
#include "TestFiles.h"
#include "TestProduct.h"
#include "WaitUntil.h"

#include <QDir>
#include <QTemporaryDir>

#include <vtkProp3D.h>

#include <gtest/gtest.h>

namespace {

constexpr int DEADLINE = 30000;

class QUORViewerSessionTest : public testing::Test {
protected:
    QUORViewerSessionTest() {
        for (int i = 0; i < 3; ++i) {
            TestProduct product;
            product.time = product.time.addSecs(300 * i);
            product.points = {12, 12, 5};
            product.fill = [](int x, int y, int) { return x > 3 && y > 3 && x < 9 && y < 9 ? 160U : 1U; };
            paths.append(product.write(_folder.path()));
        }
        times.open(_folder.path(), _folder.path(), {}, _folder.filePath(QStringLiteral(".cache")));
        session = std::make_unique<QUORViewerSession>(times.getStore());
        QObject::connect(session.get(), &QUORViewerSession::sceneChanged, [this] { ++scenes; });
        QObject::connect(session.get(), &QUORViewerSession::failed,
                         [this](const QString&, const QString& reason) { failures.append(reason); });
    }

    QUORFileLeaf::CPtr leaf(int i) const { return times.getTimes().at(i); }
    bool settled() {
        return waitUntil([&] { return !session->isBusy() && session->getScene().isComplete(); }, DEADLINE);
    }
    bool hasLayer(int key) const {
        const auto& parts = session->getScene().item->getResultParts();
        return std::any_of(parts.begin(), parts.end(),
                           [&](const auto& part) { return part.layerKey == key; });
    }

    ScratchHome _home;
    QTemporaryDir _folder;
    QStringList paths;
    QUORTimeList times;
    std::unique_ptr<QUORViewerSession> session;
    int scenes = 0;
    QStringList failures;
};

TEST_F(QUORViewerSessionTest, HasTheNextSceneReady) {
    session->show(leaf(0), leaf(1));
    EXPECT_TRUE(session->isBusy());
    ASSERT_TRUE(settled());
    EXPECT_EQ(session->getScene().leaf, leaf(0));
    ASSERT_TRUE(waitUntil([&] { return session->hasAhead(); }, DEADLINE));
    EXPECT_EQ(session->getScene().leaf, leaf(0)); // still
    EXPECT_EQ(scenes, 1);
    session->show(leaf(1), leaf(2));
    EXPECT_EQ(session->getScene().leaf, leaf(1)); // at once
    EXPECT_FALSE(session->isBusy());
    // What was wanted first is nobody's wish any more.
    session->show(leaf(0));
    session->show(leaf(2));
    ASSERT_TRUE(waitUntil([&] { return session->getScene().leaf == leaf(2); }, DEADLINE));
    ASSERT_TRUE(settled());
    EXPECT_TRUE(failures.isEmpty());
}

TEST_F(QUORViewerSessionTest, TheSceneFollowsItsSettings) {
    session->show(leaf(0));
    ASSERT_TRUE(settled());
    EXPECT_TRUE(hasLayer(QUORDisplayState::OUTLINE_LAYER));
    session->setVisible(QUORDisplayState::OUTLINE_LAYER, false);
    ASSERT_TRUE(settled());
    EXPECT_FALSE(hasLayer(QUORDisplayState::OUTLINE_LAYER));
    EXPECT_TRUE(hasLayer(QUORDisplayState::PRODUCT_3D_LAYER));
    session->setVisible(QUORDisplayState::OUTLINE_LAYER, true);
    session->setVerticalScale(2.0);
    ASSERT_TRUE(settled());
    const auto& parts = session->getScene().item->getResultParts();
    const auto outline = std::find_if(parts.begin(), parts.end(), [](const auto& part) {
        return part.layerKey == QUORDisplayState::OUTLINE_LAYER;
    });
    ASSERT_NE(outline, parts.end());
    const QUORFile& file = *leaf(0)->getFile();
    EXPECT_DOUBLE_EQ(vtkProp3D::SafeDownCast(outline->prop)->GetScale()[2], 2.0 * file.getHeightM());

    QUORProductSettings settings = *session->getProductSettings();
    settings.setRenderingType(QUORProductSettings::Volume);
    session->setProductSettings(settings);
    ASSERT_TRUE(settled());
    EXPECT_EQ(session->getProductSettings()->getRenderingType(), QUORProductSettings::Volume);
    // Another product of the series is drawn the same way.
    session->show(leaf(1));
    ASSERT_TRUE(settled());
    EXPECT_EQ(session->getProductSettings()->getRenderingType(), QUORProductSettings::Volume);
    session->readSettings();
    ASSERT_TRUE(settled());
    EXPECT_EQ(session->getProductSettings()->getRenderingType(), QUORProductSettings::Surface);
}

TEST_F(QUORViewerSessionTest, ABadProductLeavesTheSceneAsItIs) {
    session->show(leaf(0));
    ASSERT_TRUE(settled());
    TestProduct other;
    other.time = other.time.addSecs(300);
    other.site = "OTHER";
    other.writeTo(paths.at(1));
    session->show(leaf(1));
    ASSERT_TRUE(waitUntil([&] { return !failures.isEmpty(); }, DEADLINE));
    EXPECT_FALSE(session->isBusy());
    EXPECT_EQ(session->getScene().leaf, leaf(0));
    session->show(leaf(2));
    ASSERT_TRUE(waitUntil([&] { return session->getScene().leaf == leaf(2); }, DEADLINE));
    EXPECT_EQ(failures.size(), 1);
}

TEST_F(QUORViewerSessionTest, CancelsWhatIsUnderWay) {
    session->show(leaf(0));
    ASSERT_TRUE(settled());
    session->show(leaf(1));
    session->cancel();
    EXPECT_FALSE(session->isBusy());
    EXPECT_EQ(session->getScene().leaf, leaf(0));
    session->setVerticalScale(4.0);
    session->cancel();
    session->show(leaf(2));
    ASSERT_TRUE(
        waitUntil([&] { return session->getScene().leaf == leaf(2) && !session->isBusy(); }, DEADLINE));
    EXPECT_EQ(scenes, 2);
}

// Looking writes nothing, neither beside the products nor into the settings.
TEST_F(QUORViewerSessionTest, WritesNothingUnasked) {
    const QStringList before = QDir(_folder.path()).entryList(QDir::AllEntries | QDir::Hidden);
    session->show(leaf(0), leaf(1));
    ASSERT_TRUE(settled());
    session->setVerticalScale(2.0);
    ASSERT_TRUE(settled());
    EXPECT_EQ(QDir(_folder.path()).entryList(QDir::AllEntries | QDir::Hidden), before);
    const QString settings = ScratchHome::settingsDirectory() + QStringLiteral("/QUOR3D.conf");
    EXPECT_FALSE(QFile::exists(settings));
    session->saveProductSettings();
    EXPECT_TRUE(readFile(settings).contains("rendering=surface"));
}

} // namespace
