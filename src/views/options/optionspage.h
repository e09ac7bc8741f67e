#pragma once

#include <QWidget>

class CMainFrame;

// One page of the Options sheet. The page reads its values when it is built; the
// sheet first asks every page to check what the user typed, and only when all agree
// does each page write its values back, so a refused field leaves nothing half-applied.
class COptionsPage : public QWidget
{
    Q_OBJECT

public:
    COptionsPage(CMainFrame& frame, QWidget* parent) : QWidget(parent), m_frame(frame) {}

    // False with the message shown and the focus on the field when a value is refused.
    virtual bool Check() { return true; }
    virtual void Apply() = 0;

protected:
    // Shows `text` and puts the focus on `field`; the sheet brings this page forward.
    bool Refuse(const QString& text, QWidget* field);

    CMainFrame& m_frame;
};
