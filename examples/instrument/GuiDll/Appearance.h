#pragma once

#include <QColor>
#include <QString>

namespace Orvia::Appearance {

inline constexpr QColor on(255, 176, 32); ///< the output delivers a signal
inline constexpr QColor text(230, 237, 243);
inline constexpr QColor dimText(139, 152, 165);
inline constexpr QColor grid(44, 54, 64);

/// The look of the front panel and of all that stands in it, pages of plug-ins too.
QString styleSheet();

} // namespace Orvia::Appearance
