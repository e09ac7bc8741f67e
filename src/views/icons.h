#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

// The pictures of the program, all drawn here so that nothing depends on an icon theme.
namespace icons
{

// Tree picture of a task: (level mod 4) x 26 + the index of the upper-cased first
// letter of the level's name; a name that does not start with A..Z uses "A".
int TaskImageIndex(int level, const QString& levelName);
// One of the 4 x 26 letter pictures (series = index div 26, letter = index mod 26).
QIcon LetterIcon(int imageIndex);
QPixmap LetterPixmap(int imageIndex, int size = 16);

enum class Timer
{
    inactive,
    running,
    paused,
};
QIcon TimerIcon(Timer state);

// The program's own icon (the window icon and the installed one look alike).
QIcon AppIcon();

// Row pictures of the entry lists.
QIcon TimeEntryIcon(bool running);
QIcon ExpenseIcon();
// 0 outstanding, 1 overdue, 2 completed.
QIcon ToDoIcon(int state);
QIcon ReportIcon(int kind, int size = 32);

} // namespace icons
