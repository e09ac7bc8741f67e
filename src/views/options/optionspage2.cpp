#include "views/options/optionspage2.h"

#include "app/timekeeperapp.h"
#include "model/timekeeperdoc.h"
#include "views/mainframe.h"
#include "views/qtconvert.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QRadioButton>
#include <QVBoxLayout>

#include <mutex>

namespace
{

constexpr int kLevelRole = Qt::UserRole;

} // namespace

COptionsPage2::COptionsPage2(CMainFrame& frame, QWidget* parent)
    : COptionsPage(frame, parent), m_fullName(new QRadioButton(tr("&Full Name"))),
      m_abbreviation(new QRadioButton(tr("A&bbreviation"))), m_levels(new QListWidget), m_levelName(new QLineEdit)
{
    CTimeKeeperApp& app = frame.App();
    m_fullName->setObjectName(QStringLiteral("fullName"));
    m_abbreviation->setObjectName(QStringLiteral("abbreviation"));
    m_levels->setObjectName(QStringLiteral("levels"));
    m_levelName->setObjectName(QStringLiteral("levelName"));
    m_levelName->setMaxLength(255);

    auto* show = new QGroupBox(tr("Show"));
    auto* showLayout = new QVBoxLayout(show);
    showLayout->addWidget(m_fullName);
    showLayout->addWidget(m_abbreviation);
    showLayout->addStretch(1);

    auto* include = new QGroupBox(tr("Include"));
    auto* includeLayout = new QVBoxLayout(include);
    includeLayout->addWidget(m_levels, 1);
    auto* nameForm = new QFormLayout;
    nameForm->addRow(tr("&Level Name:"), m_levelName);
    includeLayout->addLayout(nameForm);

    auto* layout = new QHBoxLayout(this);
    layout->addWidget(show);
    layout->addWidget(include, 1);

    (app.GetListType() == 1 ? m_fullName : m_abbreviation)->setChecked(true);
    {
        CTimeKeeperDoc& doc = frame.Doc();
        std::lock_guard lock(doc.GetLock());
        for (int level = 0; level < kLevels; ++level)
        {
            auto it = doc.m_levelNames.find(uint32_t(level));
            auto* item = new QListWidgetItem(it == doc.m_levelNames.end() ? QString() : ToQ(it->second), m_levels);
            item->setData(kLevelRole, level);
            item->setToolTip(tr("Level %1").arg(level));
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
            item->setCheckState(app.GetShowLevel(level) ? Qt::Checked : Qt::Unchecked);
        }
    }
    m_levelName->setEnabled(false);
    connect(m_levels, &QListWidget::currentItemChanged, this, &COptionsPage2::OnLevelSelected);
    // Every keystroke shows in the level's row at once.
    connect(m_levelName, &QLineEdit::textEdited, this, [this](const QString& text) {
        if (QListWidgetItem* item = m_levels->currentItem())
            item->setText(text);
    });
}

void COptionsPage2::OnLevelSelected()
{
    QListWidgetItem* item = m_levels->currentItem();
    // Level names belong to the document: without one there is nothing to name.
    m_levelName->setEnabled(item != nullptr && m_frame.Doc().GetRootTask() != nullptr);
    m_levelName->setText(item ? item->text() : QString());
}

void COptionsPage2::Apply()
{
    CTimeKeeperApp& app = m_frame.App();
    app.SetListType(m_fullName->isChecked() ? 1 : 0);
    CTimeKeeperDoc& doc = m_frame.Doc();
    for (int row = 0; row < m_levels->count(); ++row)
    {
        const QListWidgetItem* item = m_levels->item(row);
        const int level = item->data(kLevelRole).toInt();
        const bool shown = item->checkState() == Qt::Checked;
        // On-demand keys are written at once; an unchanged one is left alone.
        if (app.GetShowLevel(level) != shown)
            app.SetShowLevel(level, shown);
        const std::string name = FromQ(item->text().trimmed());
        std::lock_guard lock(doc.GetLock());
        auto it = doc.m_levelNames.find(uint32_t(level));
        const std::string stored = it == doc.m_levelNames.end() ? std::string() : it->second;
        if (name != stored && doc.GetRootTask() != nullptr)
            doc.SetLevelName(uint32_t(level), name);
    }
}
