#pragma once

#include <QDialog>

class QLineEdit;

// Asks for the employee name of a new document; the root task takes that name.
class CNewFileDlg : public QDialog
{
    Q_OBJECT

public:
    explicit CNewFileDlg(QWidget* parent = nullptr);

    QString EmployeeName() const;
    QLineEdit* NameField() const { return m_name; }

private:
    QLineEdit* m_name;
};
