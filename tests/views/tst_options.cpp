#include "viewfixture.h"

#include "views/icons.h"
#include "views/options/catalogpage.h"
#include "views/options/namedlg.h"
#include "views/options/optionspage1.h"
#include "views/options/optionspage2.h"
#include "views/options/optionspage3.h"
#include "views/options/optionspage4.h"
#include "views/options/optionspage5.h"
#include "views/options/optionspage6.h"
#include "views/options/optionspage7.h"
#include "views/options/optionssheet.h"
#include "views/options/paymentmethodsheet.h"
#include "views/sheetlistview.h"
#include "views/taskview.h"
#include "views/timesheetview.h"
#include "widgets/monthcalendar.h"

#include <QAction>
#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <mutex>

namespace
{

const CDateTime kToday = CDateTime::FromDate(2024, 3, 13);

QStringList ListTexts(const QListWidget& list)
{
    QStringList texts;
    for (int row = 0; row < list.count(); ++row)
        texts.append(list.item(row)->text());
    return texts;
}

void SelectText(QListWidget& list, const QString& text)
{
    const QList<QListWidgetItem*> items = list.findItems(text, Qt::MatchExactly);
    QVERIFY2(!items.isEmpty(), qPrintable(text));
    list.setCurrentItem(items.front());
}

// Answers the Name dialog that the next button opens: records its caption, label and
// proposed name as "caption|label|name" in `seen`, then types `name` and presses OK.
void AnswerNameDialog(const QString& name, QString* seen)
{
    ViewFixture::WhenDialogShows([=](QDialog* dialog) {
        auto* names = qobject_cast<CNameDlg*>(dialog);
        if (names == nullptr)
        {
            dialog->reject();
            return;
        }
        *seen = names->windowTitle() + u'|' + names->Label()->text() + u'|' + names->NameField()->text();
        names->NameField()->setText(name);
        names->accept();
        if (names->isVisible())
            names->reject();
    });
}

QImage IconImage(const QIcon& icon)
{
    return icon.pixmap(16, 16).toImage().convertToFormat(QImage::Format_ARGB32);
}

} // namespace

class TestOptions : public QObject
{
    Q_OBJECT

private slots:
    void pagesComeInOrderUnderTheCaption();
    void generalPageReadsAndStoresItsSettings();
    void recentTaskCountStaysWithinItsRange();
    void timeEntriesPageStoresTheIntervalIndex();
    void taskLevelsRenameAndResortTheTree();
    void activitiesAreAddedEditedAndRemoved();
    void expenseTypesGuardTheMileageType();
    void paymentMethodsUseTheirPropertySheet();
    void invoicePageStoresItsDefaults();
    void optionsCommandMarksModifiedOnOk();
    void sheetWorksByKeyboard();
    void okAndApplyWriteTheSettingsFile();
};

void TestOptions::pagesComeInOrderUnderTheCaption()
{
    ViewFixture f;
    COptionsSheet sheet(*f.frame);
    QCOMPARE(sheet.windowTitle(), QApplication::applicationDisplayName() + QStringLiteral(" Options"));
    QStringList tabs;
    for (int i = 0; i < sheet.Pages()->count(); ++i)
        tabs.append(sheet.Pages()->tabText(i));
    QCOMPARE(tabs, QStringList({"General", "Task Levels", "Time Entries", "Activities", "Expense Types",
                                "Payment Methods", "Invoice"}));
    QVERIFY(sheet.Buttons()->button(QDialogButtonBox::Apply));

    // Tools offers it.
    QAction* options = f.frame->Action(QStringLiteral("toolsOptions"));
    QVERIFY(options);
    QCOMPARE(options->text(), QStringLiteral("&Options..."));
    bool inTools = false;
    for (QAction* menu : f.frame->menuBar()->actions())
        if (menu->text() == QStringLiteral("&Tools"))
            inTools = menu->menu()->actions().contains(options);
    QVERIFY(inTools);
}

void TestOptions::generalPageReadsAndStoresItsSettings()
{
    ViewFixture f;
    f.app->SetRecentTaskCount(12);
    f.app->SetRecentTaskSortOrder(1);
    f.app->SetWeekStart(1);
    f.app->SetAutoSave(1);
    f.app->SetHideWhenMinimized(0);
    {
        std::lock_guard lock(f.doc.GetLock());
        f.doc.m_defaultMileageRate = 0.5f;
    }
    f.doc.SetModifiedFlag(false);

    COptionsSheet sheet(*f.frame);
    COptionsPage1* page = sheet.Page1();
    QCOMPARE(page->RecentCountField()->text(), QStringLiteral("12"));
    QVERIFY(page->OrderUsedButton()->isChecked());
    QCOMPARE(page->WeekStartField()->count(), 7);
    QCOMPARE(page->WeekStartField()->itemText(0), QStringLiteral("Sunday"));
    QCOMPARE(page->WeekStartField()->itemText(6), QStringLiteral("Saturday"));
    QCOMPARE(page->WeekStartField()->currentIndex(), 0);
    QCOMPARE(page->MileageRateField()->value(), 0.5);
    QVERIFY(page->AutoSaveBox()->isChecked());
    QVERIFY(!page->HideWhenMinimizedBox()->isChecked());

    page->RecentCountField()->setText(QStringLiteral("7"));
    page->AlphabeticallyButton()->setChecked(true);
    page->WeekStartField()->setCurrentIndex(1); // Monday
    page->MileageRateField()->setValue(0.575);
    page->AutoSaveBox()->setChecked(false);
    page->HideWhenMinimizedBox()->setChecked(true);
    QVERIFY(sheet.ApplyAll());

    QCOMPARE(f.app->GetRecentTaskCount(), 7);
    QCOMPARE(f.app->GetRecentTaskSortOrder(), 0);
    QCOMPARE(f.app->GetWeekStart(), 2);
    QCOMPARE(f.app->GetAutoSave(), 0);
    QCOMPARE(f.app->GetHideWhenMinimized(), 1);
    QCOMPARE(f.doc.m_defaultMileageRate, 0.575f);
    QVERIFY(f.doc.IsModified());
    // The calendar starts its weeks on Monday at once.
    QCOMPARE(f.frame->TimeSheet()->Panels().front()->Grid()->firstDayOfWeek(), Qt::Monday);

    // The cached settings reach their keys when they are written at exit.
    QVERIFY(f.app->SaveSettings());
    QCOMPARE(f.store.GetInt("Settings", "Recent Task Count", 0), 7);
    QCOMPARE(f.store.GetInt("Settings", "RecentTaskSortOrder", -1), 0);
    QCOMPARE(f.store.GetInt("Settings", "WeekStart", 0), 2);
    QCOMPARE(f.store.GetInt("Settings", "AutoSave", -1), 0);
    QCOMPARE(f.store.GetInt("Settings", "HideWhenMinimized", -1), 1);

    // An untouched rate keeps its exact value and does not mark the document.
    {
        std::lock_guard lock(f.doc.GetLock());
        f.doc.m_defaultMileageRate = 0.1234f;
    }
    f.doc.SetModifiedFlag(false);
    COptionsSheet again(*f.frame);
    QVERIFY(again.ApplyAll());
    QCOMPARE(f.doc.m_defaultMileageRate, 0.1234f);
    QVERIFY(!f.doc.IsModified());
}

void TestOptions::recentTaskCountStaysWithinItsRange()
{
    ViewFixture f;
    f.app->SetRecentTaskCount(24);
    f.app->SetTimeInterval(0);
    COptionsSheet sheet(*f.frame);
    sheet.show();
    COptionsPage1* page = sheet.Page1();

    // The spin buttons stop at 25 and at 1.
    QTest::mouseClick(page->RecentCountUp(), Qt::LeftButton);
    QCOMPARE(page->RecentCountField()->text(), QStringLiteral("25"));
    QTest::mouseClick(page->RecentCountUp(), Qt::LeftButton);
    QCOMPARE(page->RecentCountField()->text(), QStringLiteral("25"));
    page->RecentCountField()->setText(QStringLiteral("2"));
    page->StepRecentCount(-1);
    QCOMPARE(page->RecentCountField()->text(), QStringLiteral("1"));
    QTest::mouseClick(page->RecentCountDown(), Qt::LeftButton);
    QCOMPARE(page->RecentCountField()->text(), QStringLiteral("1"));
    // A typed value beyond the range comes back into it at the next step.
    page->RecentCountField()->setText(QStringLiteral("99"));
    page->StepRecentCount(1);
    QCOMPARE(page->RecentCountField()->text(), QStringLiteral("25"));

    // Only digits can be typed.
    page->RecentCountField()->clear();
    QTest::keyClicks(page->RecentCountField(), QStringLiteral("3x-0"));
    QCOMPARE(page->RecentCountField()->text(), QStringLiteral("30"));

    // A typed count outside 1 to 25 is refused on its page with the focus on it, and
    // nothing of the sheet is applied, not even the other pages.
    sheet.Page3()->IntervalField()->setCurrentIndex(3);
    sheet.Pages()->setCurrentWidget(sheet.Page3());
    for (const QString& typed : {QStringLiteral("30"), QStringLiteral("0"), QString()})
    {
        page->RecentCountField()->setText(typed);
        const size_t shown = f.prompter.Messages().size();
        QVERIFY(!sheet.ApplyAll());
        QCOMPARE(f.prompter.Messages().size(), shown + 1);
        QCOMPARE(f.prompter.Messages().back(),
                 std::string("The number of tasks on the list must be a whole number from 1 to 25."));
        QCOMPARE(sheet.Pages()->currentWidget(), page);
        QTRY_VERIFY(page->RecentCountField()->hasFocus());
        QCOMPARE(f.app->GetRecentTaskCount(), 24);
        QCOMPARE(f.app->GetTimeInterval(), 0);
    }
    // OK refuses in the same way and the sheet stays open.
    sheet.accept();
    QVERIFY(sheet.isVisible());
    QCOMPARE(sheet.result(), 0);

    page->RecentCountField()->setText(QStringLiteral("25"));
    sheet.accept();
    QVERIFY(!sheet.isVisible());
    QCOMPARE(f.app->GetRecentTaskCount(), 25);
    QCOMPARE(f.app->GetTimeInterval(), 7);
}

void TestOptions::timeEntriesPageStoresTheIntervalIndex()
{
    ViewFixture f;
    const uint32_t acme = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.AddTime(acme, kToday, 8, 0, 9, 30);
    f.Reopen();
    f.app->SetTimeInterval(4);
    f.app->SetElapsedTimeFormat(0);
    f.app->SetStopAtMidnight(1);

    COptionsSheet sheet(*f.frame);
    COptionsPage3* page = sheet.Page3();
    QComboBox* interval = page->IntervalField();
    QStringList texts;
    QList<int> data;
    for (int i = 0; i < interval->count(); ++i)
    {
        texts.append(interval->itemText(i));
        data.append(interval->itemData(i).toInt());
    }
    QCOMPARE(texts, QStringList({"1 Minute", "3 Minutes", "5 Minutes", "6 Minutes", "10 Minutes", "15 Minutes",
                                 "30 Minutes", "1 Hour"}));
    QCOMPARE(data, QList<int>({0, 1, 2, 7, 3, 4, 5, 6}));
    // "TimeInterval" 4 is fifteen minutes, the sixth item.
    QCOMPARE(interval->currentIndex(), 5);
    QVERIFY(page->ElapsedAsTimeButton()->isChecked());
    QVERIFY(page->StopAtMidnightBox()->isChecked());

    interval->setCurrentIndex(interval->findText(QStringLiteral("6 Minutes")));
    page->ElapsedAsDecimalButton()->setChecked(true);
    page->ShowOnStartBox()->setChecked(true);
    page->ShowOnStopBox()->setChecked(true);
    page->StopAtMidnightBox()->setChecked(false);
    QVERIFY(sheet.ApplyAll());

    QCOMPARE(f.app->GetTimeInterval(), 7);
    QCOMPARE(f.app->GetElapsedTimeFormat(), 1);
    QCOMPARE(f.app->GetShowTimeEntryOnStart(), 1);
    QCOMPARE(f.app->GetShowTimeEntryOnStop(), 1);
    // Read at every tick, so written at once.
    QCOMPARE(f.store.GetInt("Settings", "StopAtMidnight", -1), 0);
    QVERIFY(f.app->SaveSettings());
    QCOMPARE(f.store.GetInt("Settings", "TimeInterval", -1), 7);
    QCOMPARE(f.store.GetInt("Settings", "ElapsedTimeFormat", -1), 1);

    // The timer rounds to six minutes and the list shows decimal hours at once.
    QCOMPARE(f.app->RoundTime(CDateTime::FromDate(2024, 3, 13, 9, 8)).GetMinute(), 6);
    CSheetListView* list = f.frame->SheetList();
    QCOMPARE(list->RowCount(), 1);
    QCOMPARE(list->RowTexts(0).value(3), QStringLiteral("1.50"));
}

void TestOptions::taskLevelsRenameAndResortTheTree()
{
    ViewFixture f;
    const uint32_t root = CTimeKeeperDoc::kRootTaskId;
    const uint32_t alpha = f.AddTask(root, 1, "Alpha");
    const uint32_t beta = f.AddTask(root, 1, "Beta");
    const uint32_t project = f.AddTask(alpha, 2, "Launch");
    {
        std::lock_guard lock(f.doc.GetLock());
        f.Task(alpha)->m_abbreviation = "ZZ";
        f.Task(beta)->m_abbreviation = "AA";
    }
    f.Reopen();
    f.doc.SetModifiedFlag(false);
    CTaskView* tree = f.frame->TaskView();
    QCOMPARE(tree->topLevelItem(0)->child(0)->text(0), QStringLiteral("Alpha"));

    COptionsSheet sheet(*f.frame);
    COptionsPage2* page = sheet.Page2();
    QVERIFY(page->FullNameButton()->isChecked());
    QListWidget* levels = page->LevelList();
    QCOMPARE(levels->count(), 20);
    QCOMPARE(ListTexts(*levels).mid(0, 6), QStringList({"Employee", "Client", "Project", "Sub Project", "Task", ""}));
    QVERIFY(!page->LevelNameField()->isEnabled());

    // Renaming the Project level: every keystroke shows in its row.
    sheet.show();
    levels->setCurrentRow(2);
    QVERIFY(page->LevelNameField()->isEnabled());
    QCOMPARE(page->LevelNameField()->text(), QStringLiteral("Project"));
    page->LevelNameField()->clear();
    QTest::keyClicks(page->LevelNameField(), QStringLiteral("Jo"));
    QCOMPARE(levels->item(2)->text(), QStringLiteral("Jo"));
    QTest::keyClicks(page->LevelNameField(), QStringLiteral("b"));
    QCOMPARE(levels->item(2)->text(), QStringLiteral("Job"));
    // Naming level 5 adds it to the Insert menu; level 3 joins shortened paths.
    levels->setCurrentRow(5);
    QTest::keyClicks(page->LevelNameField(), QStringLiteral("Phase"));
    levels->item(3)->setCheckState(Qt::Checked);
    page->AbbreviationButton()->setChecked(true);
    QVERIFY(sheet.ApplyAll());

    QCOMPARE(f.doc.GetLevelName(2), std::string("Job"));
    QCOMPARE(f.doc.GetLevelName(5), std::string("Phase"));
    QVERIFY(f.doc.IsModified());
    QVERIFY(f.app->GetShowLevel(3));
    QCOMPARE(f.store.GetInt("Settings", "Show Level3", 0), 1);
    QVERIFY(!f.app->GetShowLevel(2));
    QCOMPARE(f.app->GetListType(), 0);

    // Abbreviations order the siblings now, in the document and in the tree.
    QCOMPARE(f.doc.GetRootTask()->m_children.front()->m_id, beta);
    QTreeWidgetItem* rootItem = tree->topLevelItem(0);
    QCOMPARE(rootItem->child(0)->text(0), QStringLiteral("Beta"));
    QCOMPARE(rootItem->child(1)->text(0), QStringLiteral("Alpha"));
    // The Insert menu and the pictures follow the new names.
    QCOMPARE(f.frame->Action(QStringLiteral("insertLevel2"))->text(), QStringLiteral("New Job"));
    QVERIFY(f.frame->Action(QStringLiteral("insertLevel5")));
    QCOMPARE(f.frame->Action(QStringLiteral("insertLevel5"))->text(), QStringLiteral("New Phase"));
    QCoreApplication::processEvents();
    QTreeWidgetItem* launch = tree->ItemOf(project);
    QVERIFY(launch);
    QCOMPARE(IconImage(launch->icon(0)), IconImage(icons::LetterIcon(icons::TaskImageIndex(2, QStringLiteral("Job")))));
    QVERIFY(IconImage(launch->icon(0)) !=
            IconImage(icons::LetterIcon(icons::TaskImageIndex(2, QStringLiteral("Project")))));

    // A new sheet reads what was stored; back to full names restores the name order.
    COptionsSheet again(*f.frame);
    QVERIFY(again.Page2()->AbbreviationButton()->isChecked());
    QCOMPARE(again.Page2()->LevelList()->item(2)->text(), QStringLiteral("Job"));
    QCOMPARE(again.Page2()->LevelList()->item(3)->checkState(), Qt::Checked);
    again.Page2()->FullNameButton()->setChecked(true);
    QVERIFY(again.ApplyAll());
    QCOMPARE(tree->topLevelItem(0)->child(0)->text(0), QStringLiteral("Alpha"));
    QCOMPARE(f.doc.GetRootTask()->m_children.front()->m_id, alpha);
}

void TestOptions::activitiesAreAddedEditedAndRemoved()
{
    ViewFixture f;
    const uint32_t acme = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    CTimeEntry* entry = f.AddTime(acme, kToday, 8, 0, 9, 0);
    f.Reopen();
    f.doc.SetModifiedFlag(false);
    COptionsSheet sheet(*f.frame);
    sheet.show();
    COptionsPage4* page = sheet.Page4();
    QVERIFY(!page->RemoveButton()->isEnabled());
    QVERIFY(!page->EditButton()->isEnabled());
    const int before = page->List()->count();

    QString seen;
    AnswerNameDialog(QStringLiteral("  Design  "), &seen);
    QTest::mouseClick(page->NewButton(), Qt::LeftButton);
    QCOMPARE(seen, QStringLiteral("New Activity|Activity:|"));
    QCOMPARE(page->List()->count(), before + 1);
    const uint32_t id = page->SelectedId();
    QVERIFY(id != 0);
    QCOMPARE(f.doc.GetActivity(id)->m_name, std::string("Design"));
    QCOMPARE(page->List()->currentItem()->data(CCatalogPage::kIdRole).toUInt(), id);
    QVERIFY(f.doc.IsModified());
    QVERIFY(page->RemoveButton()->isEnabled());
    QVERIFY(page->EditButton()->isEnabled());

    // A blank name is refused inside the dialog.
    CNameDlg blank(f.prompter, QStringLiteral("New Activity"), QStringLiteral("Activity:"), QString());
    blank.show();
    blank.NameField()->setText(QStringLiteral("   "));
    blank.accept();
    QVERIFY(blank.isVisible());
    QCOMPARE(f.prompter.Messages().back(), std::string("Please enter a name."));
    blank.reject();

    AnswerNameDialog(QStringLiteral("Drafting"), &seen);
    QTest::mouseClick(page->EditButton(), Qt::LeftButton);
    QCOMPARE(seen, QStringLiteral("Edit Activity|Activity:|Design"));
    QCOMPARE(f.doc.GetActivity(id)->m_name, std::string("Drafting"));
    QCOMPARE(page->List()->currentItem()->text(), QStringLiteral("Drafting"));

    {
        std::lock_guard lock(f.doc.GetLock());
        entry = f.doc.GetDay(kToday)->TimeEntries().front().get();
        entry->m_activityId = id;
    }
    const std::string question = "Are you sure you want to delete the activity Drafting?\n\nThe activity for all time "
                                 "entries using Drafting will become unassigned. ";
    f.prompter.Script(platform::Answer::no);
    QTest::mouseClick(page->RemoveButton(), Qt::LeftButton);
    QCOMPARE(f.prompter.Questions().back(), question);
    QVERIFY(f.doc.GetActivity(id) != nullptr);
    f.prompter.Script(platform::Answer::yes);
    QTest::mouseClick(page->RemoveButton(), Qt::LeftButton);
    QCOMPARE(f.prompter.Questions().back(), question);
    QVERIFY(f.doc.GetActivity(id) == nullptr);
    QCOMPARE(page->List()->count(), before);
    QVERIFY(!page->RemoveButton()->isEnabled());
    // The entry keeps the id, which names nothing now: unassigned.
    QCOMPARE(entry->m_activityId, id);
    // A new activity never takes the freed id.
    AnswerNameDialog(QStringLiteral("Review"), &seen);
    QTest::mouseClick(page->NewButton(), Qt::LeftButton);
    QCOMPARE(page->SelectedId(), id + 1);
}

void TestOptions::expenseTypesGuardTheMileageType()
{
    ViewFixture f;
    COptionsSheet sheet(*f.frame);
    sheet.show();
    COptionsPage5* page = sheet.Page5();
    QCOMPARE(page->List()->count(), 14);
    const QString mileage = QString::fromStdString(f.doc.GetExpenseType(CExpenseType::kMileageId)->m_name);
    SelectText(*page->List(), mileage);
    QCOMPARE(page->SelectedId(), CExpenseType::kMileageId);

    // No: no dialog and no change.
    const std::string warning = "This expense item will always be used for mileage calculation even if you change "
                                "the name.\n\nDo you still want to edit this expense type?";
    QString seen;
    f.prompter.Script(platform::Answer::no);
    page->EditSelected();
    QCOMPARE(f.prompter.Questions().back(), warning);
    QCOMPARE(QString::fromStdString(f.doc.GetExpenseType(CExpenseType::kMileageId)->m_name), mileage);

    // Yes: renamed, and still the mileage type.
    f.prompter.Script(platform::Answer::yes);
    AnswerNameDialog(QStringLiteral("Car"), &seen);
    page->EditSelected();
    QCOMPARE(seen, QStringLiteral("Edit Expense Type|Expense Type:|") + mileage);
    QCOMPARE(f.doc.GetExpenseType(CExpenseType::kMileageId)->m_name, std::string("Car"));
    QCOMPARE(page->SelectedId(), CExpenseType::kMileageId);

    // Other types are edited without the question.
    const size_t asked = f.prompter.Questions().size();
    AnswerNameDialog(QStringLiteral("Parking"), &seen);
    page->NewRecord();
    QCOMPARE(seen, QStringLiteral("New Expense Type|Expense Type:|"));
    const uint32_t parking = page->SelectedId();
    QCOMPARE(f.doc.GetExpenseType(parking)->m_name, std::string("Parking"));
    AnswerNameDialog(QStringLiteral("Car Park"), &seen);
    page->EditSelected();
    QCOMPARE(f.prompter.Questions().size(), asked);
    QCOMPARE(f.doc.GetExpenseType(parking)->m_name, std::string("Car Park"));

    f.prompter.Script(platform::Answer::yes);
    page->RemoveSelected();
    QCOMPARE(f.prompter.Questions().back(),
             std::string("Are you sure you want to delete the expense type Car Park?\n\nThe expense type for all "
                         "expense entries using Car Park will become unassigned. "));
    QVERIFY(f.doc.GetExpenseType(parking) == nullptr);
    QCOMPARE(page->List()->count(), 14);
}

void TestOptions::paymentMethodsUseTheirPropertySheet()
{
    ViewFixture f;
    const uint32_t acme = f.AddTask(CTimeKeeperDoc::kRootTaskId, 1, "Acme");
    f.Reopen();
    COptionsSheet sheet(*f.frame);
    sheet.show();
    COptionsPage6* page = sheet.Page6();
    const int before = page->List()->count();

    QString seen;
    ViewFixture::WhenDialogShows([&seen](QDialog* dialog) {
        auto* properties = qobject_cast<CPaymentMethodSheet*>(dialog);
        if (properties == nullptr)
        {
            dialog->reject();
            return;
        }
        seen = properties->windowTitle() + u'|' + properties->findChild<QTabWidget*>()->tabText(0) + u'|' +
               properties->AccountTypeField()->itemText(5);
        properties->NameField()->setText(QStringLiteral("Visa"));
        properties->AccountNumberField()->setText(QStringLiteral("4000 1234"));
        properties->AccountTypeField()->setCurrentIndex(1);
        properties->accept();
    });
    page->NewRecord();
    QCOMPARE(seen, QStringLiteral("Payment Method Properties|General|Personal Check"));
    const uint32_t id = page->SelectedId();
    QVERIFY(id != 0);
    QCOMPARE(page->List()->count(), before + 1);
    {
        std::lock_guard lock(f.doc.GetLock());
        const CPaymentMethod* method = f.doc.GetPaymentMethod(id);
        QCOMPARE(method->m_name, std::string("Visa"));
        QCOMPARE(method->m_accountNumber, std::string("4000 1234"));
        QCOMPARE(method->m_accountType, 1u);
    }

    // Edited in the same sheet, starting from the stored values.
    ViewFixture::WhenDialogShows([&seen](QDialog* dialog) {
        auto* properties = qobject_cast<CPaymentMethodSheet*>(dialog);
        if (properties == nullptr)
        {
            dialog->reject();
            return;
        }
        seen = properties->NameField()->text() + u'|' + properties->AccountNumberField()->text() + u'|' +
               properties->AccountTypeField()->currentText();
        properties->NameField()->setText(QStringLiteral("Cash Box"));
        properties->AccountTypeField()->setCurrentIndex(2);
        properties->accept();
    });
    page->EditSelected();
    QCOMPARE(seen, QStringLiteral("Visa|4000 1234|Personal Credit Card"));
    QCOMPARE(f.doc.GetPaymentMethod(id)->m_name, std::string("Cash Box"));
    QCOMPARE(f.doc.GetPaymentMethod(id)->m_accountType, 2u);
    QCOMPARE(page->List()->currentItem()->text(), QStringLiteral("Cash Box"));

    // Removing one that expenses use leaves them unassigned.
    CExpenseEntry* expense = nullptr;
    {
        std::lock_guard lock(f.doc.GetLock());
        auto e = std::make_unique<CExpenseEntry>();
        e->m_taskId = acme;
        e->m_date = kToday;
        e->m_paymentMethodId = id;
        e->m_amount = 12.5;
        expense = f.doc.FileExpenseEntry(f.doc.GetOrCreateDay(kToday), std::move(e));
    }
    f.prompter.Script(platform::Answer::yes);
    page->RemoveSelected();
    QCOMPARE(f.prompter.Questions().back(),
             std::string("Are you sure you want to delete the payment method Cash Box?\n\nThe payment method for all "
                         "expense entries using Cash Box will become unassigned. "));
    QVERIFY(f.doc.GetPaymentMethod(id) == nullptr);
    QCOMPARE(expense->m_paymentMethodId, id);
    QCOMPARE(page->List()->count(), before);
}

void TestOptions::invoicePageStoresItsDefaults()
{
    ViewFixture f;
    f.app->SetInvoiceAddress("Pat Example\n1 Main Street");
    f.app->SetDefaultTaxRate(8.25);
    f.app->SetDefaultTerms("Net 30");
    f.app->SetInvoiceNumber(17);

    COptionsSheet sheet(*f.frame);
    sheet.show();
    COptionsPage7* page = sheet.Page7();
    QCOMPARE(page->AddressField()->toPlainText(), QStringLiteral("Pat Example\n1 Main Street"));
    QCOMPARE(page->TaxRateField()->value(), 8.25);
    QCOMPARE(page->TermsField()->text(), QStringLiteral("Net 30"));
    QCOMPARE(page->NextNumberField()->text(), QStringLiteral("17"));
    // The rate and the terms keep to what an invoice holds.
    QCOMPARE(page->TaxRateField()->maximum(), 100.0);
    QCOMPARE(page->TaxRateField()->minimum(), 0.0);
    QCOMPARE(page->TermsField()->maxLength(), 30);

    // Numbers only.
    page->NextNumberField()->clear();
    QTest::keyClicks(page->NextNumberField(), QStringLiteral("4a2."));
    QCOMPARE(page->NextNumberField()->text(), QStringLiteral("42"));
    page->AddressField()->setPlainText(QStringLiteral("Lee Example\n2 High Street\nSpringfield"));
    page->TaxRateField()->setValue(7.5);
    page->TermsField()->setText(QStringLiteral("Due on receipt"));
    QVERIFY(sheet.ApplyAll());
    QCOMPARE(f.store.GetString("Settings", "InvoiceAddress", ""), std::string("Lee Example\n2 High Street\nSpringfield"));
    QCOMPARE(f.store.GetString("Settings", "DefaultTaxRate", ""), std::string("7.500000e+00"));
    QCOMPARE(f.store.GetString("Settings", "DefaultTerms", ""), std::string("Due on receipt"));
    QCOMPARE(f.store.GetInt("Settings", "InvoiceNumber", 0), 42);

    // An empty or zero number is refused.
    for (const QString& typed : {QString(), QStringLiteral("0")})
    {
        page->NextNumberField()->setText(typed);
        QVERIFY(!sheet.ApplyAll());
        QCOMPARE(f.prompter.Messages().back(),
                 std::string("The next invoice number must be a whole number from 1 to 2147483647."));
        QCOMPARE(sheet.Pages()->currentWidget(), page);
        QTRY_VERIFY(page->NextNumberField()->hasFocus());
    }
    QCOMPARE(f.app->GetInvoiceNumber(), 42);
}

void TestOptions::optionsCommandMarksModifiedOnOk()
{
    ViewFixture f;
    f.doc.SetModifiedFlag(false);
    bool editorOpen = false;
    // Cancel: nothing marked.
    ViewFixture::WhenDialogShows([&editorOpen, &f](QDialog* dialog) {
        editorOpen = f.doc.m_editorOpen;
        dialog->reject();
    });
    f.frame->Action(QStringLiteral("toolsOptions"))->trigger();
    QVERIFY(editorOpen);
    QVERIFY(!f.doc.m_editorOpen);
    QVERIFY(!f.doc.IsModified());

    // OK: the document is marked and the level name reaches the Insert menu.
    ViewFixture::WhenDialogShows([](QDialog* dialog) {
        auto* sheet = qobject_cast<COptionsSheet*>(dialog);
        if (sheet == nullptr)
        {
            dialog->reject();
            return;
        }
        sheet->Page2()->LevelList()->item(1)->setText(QStringLiteral("Customer"));
        QTest::mouseClick(sheet->Buttons()->button(QDialogButtonBox::Ok), Qt::LeftButton);
    });
    f.frame->OnOptions();
    QVERIFY(f.doc.IsModified());
    QVERIFY(!f.doc.m_editorOpen);
    QCOMPARE(f.frame->Action(QStringLiteral("insertLevel1"))->text(), QStringLiteral("New Customer"));

    // OK with nothing changed still marks a document that holds tasks.
    f.doc.SetModifiedFlag(false);
    ViewFixture::WhenDialogShows([](QDialog* dialog) { dialog->accept(); });
    f.frame->OnOptions();
    QVERIFY(f.doc.IsModified());
}

void TestOptions::sheetWorksByKeyboard()
{
    ViewFixture f;
    f.app->SetRecentTaskCount(10);
    COptionsSheet sheet(*f.frame);
    sheet.show();
    QVERIFY(QTest::qWaitForWindowExposed(&sheet));
    COptionsPage1* page = sheet.Page1();
    page->RecentCountField()->setFocus();
    QTest::keyClick(page->RecentCountField(), Qt::Key_Up);
    QTest::keyClick(page->RecentCountField(), Qt::Key_Up);
    QCOMPARE(page->RecentCountField()->text(), QStringLiteral("12"));
    QTest::keyClick(page->RecentCountField(), Qt::Key_Down);
    QCOMPARE(page->RecentCountField()->text(), QStringLiteral("11"));

    // Every field of every page has a label that names it with a mnemonic, or a text
    // of its own, and takes the focus from the keyboard.
    for (int i = 0; i < sheet.Pages()->count(); ++i)
    {
        QWidget* p = sheet.Pages()->widget(i);
        for (QWidget* w : p->findChildren<QWidget*>())
        {
            if (qobject_cast<QLabel*>(w) || w->objectName().isEmpty() || w->objectName().startsWith(u"qt_") ||
                qobject_cast<QToolButton*>(w))
                continue;
            QVERIFY2(w->focusPolicy() & Qt::TabFocus, qPrintable(w->objectName()));
            bool named = false;
            if (auto* b = qobject_cast<QAbstractButton*>(w))
                named = b->text().contains(u'&');
            for (QLabel* label : p->findChildren<QLabel*>())
                if (label->buddy() == w && label->text().contains(u'&'))
                    named = true;
            if (qobject_cast<QListWidget*>(w))
                named = true; // reached by Tab from the page's first field
            QVERIFY2(named, qPrintable(w->objectName()));
        }
    }

    // Within a page, together with the sheet's own buttons, no two fields share a
    // mnemonic: Alt and the letter must reach one field, not cycle between two.
    auto mnemonic = [](const QString& text) {
        const int at = text.indexOf(u'&');
        return at >= 0 && at + 1 < text.size() ? text.at(at + 1).toLower() : QChar();
    };
    QStringList sheetKeys;
    for (QAbstractButton* b : sheet.Buttons()->buttons())
        if (!mnemonic(b->text()).isNull())
            sheetKeys.append(mnemonic(b->text()));
    for (int i = 0; i < sheet.Pages()->count(); ++i)
    {
        QStringList keys = sheetKeys;
        QWidget* p = sheet.Pages()->widget(i);
        QStringList texts;
        for (QAbstractButton* b : p->findChildren<QAbstractButton*>())
            texts.append(b->text());
        for (QLabel* label : p->findChildren<QLabel*>())
            if (label->buddy())
                texts.append(label->text());
        for (const QString& text : texts)
        {
            const QChar key = mnemonic(text);
            if (key.isNull())
                continue;
            QVERIFY2(!keys.contains(key), qPrintable(sheet.Pages()->tabText(i) + QStringLiteral(": ") + text));
            keys.append(key);
        }
    }
}

void TestOptions::okAndApplyWriteTheSettingsFile()
{
    ViewFixture f;
    const std::string file = f.Path(QStringLiteral("settings.conf")).toStdString();
    platform::SettingsStore store(file), disk(file);
    CTimeKeeperApp app(store, f.clock, platform::LocaleInfo::UnitedStates());
    CTimeKeeperDoc doc;
    CTestFrame frame(app, doc, f.prompter);
    COptionsSheet sheet(frame);
    sheet.Page3()->IntervalField()->setCurrentIndex(6); // "30 Minutes"
    sheet.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Apply)->click();
    QVERIFY(disk.Load() && disk.GetInt("Settings", "TimeInterval", -1) == 5);
}

int RunOptionsTests(int argc, char** argv)
{
    TestOptions test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_options.moc"
