#pragma once

#include <QDate>
#include <QDialog>

class CDateTimeEdit;
class CMainFrame;

// "Go To Date" (or "Move To" for an expense): one date field within 1900-2300.
class CGoToDateDlg : public QDialog
{
    Q_OBJECT

public:
    CGoToDateDlg(CMainFrame& frame, const QDate& start, const QString& caption, QWidget* parent = nullptr);

    QDate Date() const;
    CDateTimeEdit* DateField() const { return m_date; }

    void accept() override;

private:
    CMainFrame& m_frame;
    CDateTimeEdit* m_date;
};

// Sets up a date field the way every date field of the program works: the user's
// picture, the 1900-2300 range and the "FastEntry" setting.
class CTimeKeeperApp;
void ConfigureDateField(CDateTimeEdit& field, const CTimeKeeperApp& app);
