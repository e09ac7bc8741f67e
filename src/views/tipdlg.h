#pragma once

#include <QDialog>
#include <QString>

#include <cstdio>
#include <string>

namespace platform
{
class SettingsStore;
}
class QCheckBox;
class QLabel;
class QPushButton;

// The tips file: one tip a line, the first 6 characters a help-topic number (blanks
// for none); lines starting with a tab or ";" and empty lines are skipped. The place
// of the next tip is kept in the settings ("Tip" section) and starts over when the
// file changes.
class CTipsFile
{
public:
    CTipsFile(platform::SettingsStore& store, const std::string& path);
    ~CTipsFile();
    CTipsFile(const CTipsFile&) = delete;
    CTipsFile& operator=(const CTipsFile&) = delete;

    bool IsOpen() const { return m_file != nullptr; }
    // False after a failed seek (the error text is then set).
    bool Next(std::string& topic, std::string& text);
    const std::string& Error() const { return m_error; }
    long Offset() const;

private:
    platform::SettingsStore& m_store;
    std::FILE* m_file = nullptr;
    std::string m_error;
};

// Where the tips file is: "tips.txt" in the current folder, beside the program,
// or in the installed data folder.
QString FindTipsFile();

// The Tip of the Day.
class CTipDlg : public QDialog
{
    Q_OBJECT

public:
    // `path` empty: the file FindTipsFile finds.
    CTipDlg(platform::SettingsStore& store, QWidget* parent = nullptr, const QString& path = QString());
    ~CTipDlg() override;

    QString TipText() const;
    QString Topic() const { return m_topic; }
    QPushButton* NextButton() const { return m_next; }
    QPushButton* MoreButton() const { return m_more; }
    QCheckBox* ShowAtStartUpBox() const { return m_showAtStartUp; }

    void ShowNextTip();

    void done(int result) override;

private:
    platform::SettingsStore& m_store;
    CTipsFile* m_tips;
    QLabel* m_text;
    QPushButton* m_next;
    QPushButton* m_more;
    QCheckBox* m_showAtStartUp;
    QString m_topic;
};
