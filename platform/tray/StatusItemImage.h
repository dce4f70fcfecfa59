#pragma once

#include "platform/StatusItem.h"

#include <QImage>

#include <array>

namespace tidewick
{

/// The sizes, in pixels, that bars ask for, at 1x and 2x.
inline constexpr std::array<int, 6> statusIconSides{16, 22, 24, 32, 48, 64};

/// The icon alone, centred in a square of `side` pixels. The square stands for a bar 22 points
/// high, so an icon of 18 points fills 18/22 of it.
QImage plainStatusImage(const QImage &icon, QSize points, int side);

/// Icon and title in one square, for a bar that shows only square icons. The title is a badge in
/// the lower right corner, large enough for legible digits. Beside a single digit the icon is as
/// large and as high as without a title; what the badge would touch is left out, but never a part
/// of the emblem, which is the upper three quarters of the middle half of the icon. Above a longer
/// title there is only the emblem, as large as it can be.
QImage badgedStatusImage(const QImage &icon, QSize points, const StatusTitle &title, int side);

/// Icon and title side by side in a picture `height` pixels high, for a bar that keeps its width.
/// The icon stands where it is without a title.
QImage wideStatusImage(const QImage &icon, QSize points, const StatusTitle &title, int height);

} // namespace tidewick
