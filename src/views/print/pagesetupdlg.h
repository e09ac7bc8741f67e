#pragma once

#include <QDialog>
#include <QPageSize>

class CTimeKeeperApp;
class QComboBox;
class QDoubleSpinBox;

namespace print
{

// File > Page Setup...: the paper and the four page margins. The margins are shown
// in the locale's unit (millimetres, or inches where it measures in inches) and kept
// as the settings keep them: hundredths of a millimetre or thousandths of an inch.
class CPageSetupDlg : public QDialog
{
    Q_OBJECT
public:
    CPageSetupDlg(const CTimeKeeperApp& app, const QPageSize& paper, QWidget* parent = nullptr);

    QPageSize Paper() const;
    // The margins in the settings' unit: left, top, right, bottom.
    void Margins(int& left, int& top, int& right, int& bottom) const;
    // Writes the margins into the settings.
    void Apply(CTimeKeeperApp& app) const;

    QComboBox* PaperBox() const { return m_paper; }
    QDoubleSpinBox* MarginBox(int side) const { return m_margins[side]; }

private:
    bool m_inches;
    QComboBox* m_paper;
    QDoubleSpinBox* m_margins[4];
};

} // namespace print
