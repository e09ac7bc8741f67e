#pragma once

#include <QIcon>

// The pictures of the print commands, drawn like the program's others (no icon theme).
namespace print
{

QIcon PrintIcon();
QIcon PreviewIcon();

} // namespace print
