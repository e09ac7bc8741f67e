#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;

namespace platform
{
class Prompter;
}

// Asks for one name (an activity, an expense type) under a caption and a label that
// the caller gives. A blank name is refused with a message.
class CNameDlg : public QDialog
{
    Q_OBJECT

public:
    CNameDlg(platform::Prompter& prompter, const QString& caption, const QString& label, const QString& name, QWidget* parent = nullptr);

    // The name as typed, without surrounding blanks.
    QString Name() const;
    QLineEdit* NameField() const { return m_name; }
    QLabel* Label() const { return m_label; }

    void accept() override;

private:
    platform::Prompter& m_prompter;
    QLabel* m_label;
    QLineEdit* m_name;
};
