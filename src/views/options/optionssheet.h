#pragma once

#include <QDialog>

class CMainFrame;
class COptionsPage;
class COptionsPage1;
class COptionsPage2;
class COptionsPage3;
class COptionsPage4;
class COptionsPage5;
class COptionsPage6;
class COptionsPage7;
class QDialogButtonBox;
class QTabWidget;

// Tools, "Options...": the user's settings and, through the document, the task
// levels, the catalogs and the invoice defaults, on seven pages.
class COptionsSheet : public QDialog
{
    Q_OBJECT

public:
    COptionsSheet(CMainFrame& frame, QWidget* parent = nullptr);

    // Checks every page and, when all agree, writes them all back (OK and Apply).
    // False with the refusing page in front and its message shown.
    bool ApplyAll();
    void accept() override;

    QTabWidget* Pages() const { return m_pages; }
    QDialogButtonBox* Buttons() const { return m_buttons; }
    COptionsPage1* Page1() const { return m_page1; }
    COptionsPage2* Page2() const { return m_page2; }
    COptionsPage3* Page3() const { return m_page3; }
    COptionsPage4* Page4() const { return m_page4; }
    COptionsPage5* Page5() const { return m_page5; }
    COptionsPage6* Page6() const { return m_page6; }
    COptionsPage7* Page7() const { return m_page7; }

private:
    CMainFrame& m_frame;
    QTabWidget* m_pages;
    QDialogButtonBox* m_buttons;
    COptionsPage1* m_page1;
    COptionsPage2* m_page2;
    COptionsPage3* m_page3;
    COptionsPage4* m_page4;
    COptionsPage5* m_page5;
    COptionsPage6* m_page6;
    COptionsPage7* m_page7;
};
