#pragma once

#include <QPixmap>

// The picture on the left of every page of the report wizard: a report sheet with
// a bar chart and a clock, drawn here rather than loaded.
QPixmap ReportWizardPicture(int width = 150, int height = 320);
