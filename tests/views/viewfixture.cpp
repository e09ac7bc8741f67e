#include "viewfixture.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QTest>
#include <QTimer>

#include <mutex>

QStringList Texts(const QMenu& menu)
{
    QStringList texts;
    for (QAction* a : menu.actions())
        if (!a->isSeparator())
            texts.append(a->text());
    return texts;
}

ViewFixture::ViewFixture() : clock(platform::LocalTime{2024, 3, 13, 9, 0, 0})
{
    app = std::make_unique<CTimeKeeperApp>(store, clock, platform::LocaleInfo::UnitedStates());
    app->LoadSettings();
    // Test runs never wait for the Tip of the Day.
    store.SetInt("Tip", "StartUp", 1);
    path = dir.filePath(QStringLiteral("Hours.qvx"));
    doc.NewDocument("Pat Example");
    doc.OnSaveDocument(path.toStdString(), prompter);
    doc.CloseHeldFile();
    doc.DeleteContents();
    frame = std::make_unique<CTestFrame>(*app, doc, prompter);
    frame->resize(1000, 700);
    frame->show();
    frame->OpenDocumentFile(path);
}

ViewFixture::~ViewFixture()
{
    frame.reset();
    doc.CloseHeldFile();
}

void ViewFixture::Reopen()
{
    doc.OnSaveDocument(path.toStdString(), prompter);
    frame->OpenDocumentFile(path);
}

uint32_t ViewFixture::AddTask(uint32_t parentId, int level, const std::string& name)
{
    std::lock_guard lock(doc.GetLock());
    CTask* task = doc.AddTask(doc.GetTask(parentId), uint16_t(level));
    doc.RenameTask(task, name);
    return task->m_id;
}

CTimeEntry* ViewFixture::AddTime(uint32_t taskId, const CDateTime& date, int h1, int m1, int h2, int m2)
{
    std::lock_guard lock(doc.GetLock());
    auto entry = std::make_unique<CTimeEntry>();
    entry->m_taskId = taskId;
    entry->m_start = CTinyTime(h1, m1);
    entry->m_end = CTinyTime(h2, m2);
    return doc.FileTimeEntry(doc.GetOrCreateDay(date), std::move(entry));
}

void ViewFixture::WhenDialogShows(const std::function<void(QDialog*)>& answer, int ms)
{
    auto* poll = new QTimer;
    auto* elapsed = new int(0);
    QObject::connect(poll, &QTimer::timeout, [poll, elapsed, answer, ms] {
        *elapsed += 20;
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr && *elapsed < ms)
            return;
        poll->stop();
        poll->deleteLater();
        delete elapsed;
        if (dialog)
            answer(dialog);
    });
    poll->start(20);
}
