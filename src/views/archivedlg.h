#pragma once

#include "model/datetime.h"

#include <QDialog>

#include <cstdint>

class CDateTimeEdit;
class CMainFrame;
class QCheckBox;
class QTreeWidget;

// "Archive": which task (with everything below it) and which days to move out
// into an archive file, and whether to delete them here afterwards.
class CArchiveDlg : public QDialog
{
    Q_OBJECT

public:
    CArchiveDlg(CMainFrame& frame, QWidget* parent = nullptr);

    uint32_t SelectedTaskId() const;
    // Null for an empty field (an open end).
    CDateTime From() const;
    CDateTime To() const;
    bool DeleteArchived() const;

    QTreeWidget* Tree() const { return m_tree; }
    CDateTimeEdit* FromField() const { return m_from; }
    CDateTimeEdit* ToField() const { return m_to; }
    QCheckBox* DeleteBox() const { return m_delete; }

    void accept() override;

private:
    CMainFrame& m_frame;
    QTreeWidget* m_tree;
    CDateTimeEdit* m_from;
    CDateTimeEdit* m_to;
    QCheckBox* m_delete;
};
