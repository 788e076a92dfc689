// SPDX-License-Identifier: MIT
#include "QUORTerrainGrid.h"

#include "QUORDtedLayout.h"

#include <QtEndian>

#include <algorithm>

namespace {

constexpr double NO_HEIGHT = 32767.0;
constexpr int POST_BYTES = 2;
constexpr int LAST = QUORTerrainGrid::REDUCED_SIDE - 1;

/// The sum and number of the valid posts of one averaged block.
struct Sum {
    int sum = 0;
    int count = 0;
};

/// The source posts that one reduced post averages: a single one at either edge.
int blockLength(int index, int step) {
    return index == 0 || index == LAST ? 1 : step;
}

bool isSrtmVoid(int post) {
    return post == -32768;
}

/// The format's own void is all ones, and -32767 in its sign-magnitude numbers. Tools that write two's
/// complement turn them into -1 and into -32767 or -32768.
bool isDtedVoid(int post) {
    return post == -1 || post == -32767 || post == -32768;
}

template <class IsVoid>
void addLine(const uchar* line, int step, std::vector<Sum>& sums, IsVoid isVoid) {
    for (int j = 0; j <= LAST; ++j) {
        const uchar* post = line + std::ptrdiff_t(j) * step * POST_BYTES;
        for (int k = blockLength(j, step); k > 0; --k, post += POST_BYTES) {
            const int height = qFromBigEndian<qint16>(post);
            sums[j].sum += std::max(height, 0);
            sums[j].count += isVoid(height) ? 0 : 1;
        }
    }
}

/// Averages square blocks of a file made of `lines` of posts. `store(line, post, sum)` takes the result in
/// file order.
template <class IsVoid, class Store>
void reduce(const uchar* lines, qsizetype lineBytes, int step, IsVoid isVoid, Store store) {
    std::vector<Sum> sums(QUORTerrainGrid::REDUCED_SIDE);
    for (int i = 0; i <= LAST; ++i) {
        std::fill(sums.begin(), sums.end(), Sum());
        for (int k = 0; k < blockLength(i, step); ++k) {
            addLine(lines + (qsizetype(i) * step + k) * lineBytes, step, sums, isVoid);
        }
        for (int j = 0; j <= LAST; ++j) {
            store(i, j, sums[j]);
        }
    }
}

} // namespace

QUORTerrainGrid QUORTerrainGrid::reduceSrtm(const QByteArray& bytes, int postsPerSide) {
    QUORTerrainGrid grid(REDUCED_SIDE);
    double lowest = NO_HEIGHT;
    double previous = NO_HEIGHT;
    reduce(reinterpret_cast<const uchar*>(bytes.constData()), qsizetype(postsPerSide) * POST_BYTES,
           (postsPerSide - 1) / LAST, isSrtmVoid, [&](int row, int column, const Sum& block) {
               if (block.count > 0) {
                   previous = double(block.sum) / block.count;
                   lowest = std::min(lowest, previous);
               } else if (column == 0) {
                   previous = lowest;
               }
               grid.at(row, column) = previous;
           });
    // Voids before the first valid post have nothing to repeat: no spike may stand there.
    std::replace(grid.heights.begin(), grid.heights.end(), NO_HEIGHT, lowest < NO_HEIGHT ? lowest : 0.0);
    return grid;
}

QUORTerrainGrid QUORTerrainGrid::reduceDted1(const QByteArray& bytes) {
    QUORTerrainGrid grid(REDUCED_SIDE);
    double previous = 0.0;
    const auto* lines = reinterpret_cast<const uchar*>(bytes.constData()) + QUORDtedLayout::DATA_OFFSET +
                        QUORDtedLayout::RECORD_HEADER_BYTES;
    reduce(lines, QUORDtedLayout::RECORD_BYTES, (QUORDtedLayout::POSTS - 1) / LAST, isDtedVoid,
           [&](int column, int postFromSouth, const Sum& block) {
               if (block.count > 0) {
                   previous = double(block.sum) / block.count;
               }
               grid.at(LAST - postFromSouth, column) = previous;
           });
    return grid;
}

QUORTerrainGrid QUORTerrainGrid::thin(int step) const {
    QUORTerrainGrid result((side - 1) / step + 1);
    for (int row = 0; row < result.side; ++row) {
        for (int column = 0; column < result.side; ++column) {
            result.at(row, column) = at(side - 1 - row * step, column * step);
        }
    }
    return result;
}
