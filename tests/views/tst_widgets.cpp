#include "widgets/currencyedit.h"
#include "widgets/datetimeedit.h"

#include <QTest>

class TestWidgets : public QObject
{
    Q_OBJECT

private slots:
    void fastEntryFillsTheSeparators();
    void fastEntryTimesAndBackspace();
    void freeTextIsReadLeniently();
    void rangeAndEmptyFields();
    void upAndDownStepThePartUnderTheCursor();
    void currencyIsShownAndReadInTheLocaleFormat();
};

void TestWidgets::fastEntryFillsTheSeparators()
{
    CDateTimeEdit edit(CDateTimeEdit::Mode::date);
    edit.SetDatePicture(QStringLiteral("MM/dd/yyyy"));
    edit.SetFastEntry(true);
    QTest::keyClicks(&edit, QStringLiteral("03152024"));
    QCOMPARE(edit.text(), QStringLiteral("03/15/2024"));
    QCOMPARE(edit.Date(), QDate(2024, 3, 15));

    // A part that cannot take another digit moves on by itself; a separator ends one early.
    edit.Clear();
    QTest::keyClicks(&edit, QStringLiteral("4/7/24"));
    QCOMPARE(edit.text(), QStringLiteral("4/7/24"));
    QCOMPARE(edit.Date(), QDate(2024, 4, 7));
    edit.Clear();
    QTest::keyClicks(&edit, QStringLiteral("1/2/1999"));
    QCOMPARE(edit.text(), QStringLiteral("1/2/1999"));
    QCOMPARE(edit.Date(), QDate(1999, 1, 2));
    // Letters do nothing in a date.
    edit.Clear();
    QTest::keyClicks(&edit, QStringLiteral("x12y"));
    QCOMPARE(edit.text(), QStringLiteral("12/"));

    // Day-first pictures work the same way.
    CDateTimeEdit european(CDateTimeEdit::Mode::date);
    european.SetDatePicture(QStringLiteral("dd.MM.yyyy"));
    european.SetFastEntry(true);
    QTest::keyClicks(&european, QStringLiteral("29022024"));
    QCOMPARE(european.text(), QStringLiteral("29.02.2024"));
    QCOMPARE(european.Date(), QDate(2024, 2, 29));
}

void TestWidgets::fastEntryTimesAndBackspace()
{
    CDateTimeEdit edit(CDateTimeEdit::Mode::time);
    edit.SetTimePicture(QStringLiteral("h:mm AP"));
    edit.SetFastEntry(true);
    QTest::keyClicks(&edit, QStringLiteral("930p"));
    QCOMPARE(edit.text(), QStringLiteral("9:30 PM"));
    QCOMPARE(edit.Time(), QTime(21, 30));
    edit.Clear();
    QTest::keyClicks(&edit, QStringLiteral("1205a"));
    QCOMPARE(edit.Time(), QTime(0, 5));

    // Backspace takes the digit and the separator that was filled in before it.
    edit.Clear();
    QTest::keyClicks(&edit, QStringLiteral("93"));
    QCOMPARE(edit.text(), QStringLiteral("9:3"));
    QTest::keyClick(&edit, Qt::Key_Backspace);
    QCOMPARE(edit.text(), QStringLiteral("9"));
    QTest::keyClicks(&edit, QStringLiteral("45"));
    QCOMPARE(edit.text(), QStringLiteral("9:45 "));
    QCOMPARE(edit.Time(), QTime(9, 45));

    CDateTimeEdit clock24(CDateTimeEdit::Mode::time);
    clock24.SetTimePicture(QStringLiteral("HH:mm"));
    clock24.SetFastEntry(true);
    QTest::keyClicks(&clock24, QStringLiteral("2215"));
    QCOMPARE(clock24.text(), QStringLiteral("22:15"));
    QCOMPARE(clock24.Time(), QTime(22, 15));
    clock24.Clear();
    QTest::keyClicks(&clock24, QStringLiteral("7:5"));
    QCOMPARE(clock24.Time(), QTime(7, 5));
}

void TestWidgets::freeTextIsReadLeniently()
{
    CDateTimeEdit edit(CDateTimeEdit::Mode::date);
    edit.SetDatePicture(QStringLiteral("MM/dd/yyyy"));
    edit.setText(QStringLiteral("3-5-2024"));
    QCOMPARE(edit.Date(), QDate(2024, 3, 5));
    edit.setText(QStringLiteral("2/30/2024"));
    QVERIFY(!edit.Date().isValid());
    QVERIFY(!edit.IsAcceptable());
    edit.setText(QStringLiteral("3/5/2024/7"));
    QVERIFY(!edit.Date().isValid());
    edit.setText(QStringLiteral("12/31/49"));
    QCOMPARE(edit.Date(), QDate(2049, 12, 31));
    edit.setText(QStringLiteral("12/31/50"));
    QCOMPARE(edit.Date(), QDate(1950, 12, 31));

    CDateTimeEdit time(CDateTimeEdit::Mode::time);
    time.SetTimePicture(QStringLiteral("h:mm AP"));
    time.setText(QStringLiteral("13:00 PM"));
    QVERIFY(!time.Time().isValid());
    time.setText(QStringLiteral("12:00 am"));
    QCOMPARE(time.Time(), QTime(0, 0));
    time.SetTime(QTime(17, 5));
    QCOMPARE(time.text(), QStringLiteral("5:05 PM"));
}

void TestWidgets::rangeAndEmptyFields()
{
    CDateTimeEdit edit(CDateTimeEdit::Mode::date);
    edit.SetDatePicture(QStringLiteral("MM/dd/yyyy"));
    QVERIFY(!edit.IsAcceptable());
    edit.SetAllowEmpty(true);
    QVERIFY(edit.IsAcceptable());
    QVERIFY(!edit.Date().isValid());
    edit.SetDate(QDate(1899, 12, 31));
    QVERIFY(!edit.IsAcceptable());
    edit.SetDate(QDate(1900, 1, 1));
    QVERIFY(edit.IsAcceptable());
    edit.SetDate(QDate(2301, 1, 1));
    QVERIFY(!edit.IsAcceptable());
}

void TestWidgets::upAndDownStepThePartUnderTheCursor()
{
    CDateTimeEdit edit(CDateTimeEdit::Mode::date);
    edit.SetDatePicture(QStringLiteral("MM/dd/yyyy"));
    edit.SetDate(QDate(2024, 1, 31));
    edit.setCursorPosition(4); // in the day
    QTest::keyClick(&edit, Qt::Key_Up);
    QCOMPARE(edit.Date(), QDate(2024, 2, 1));
    edit.setCursorPosition(1); // in the month
    QTest::keyClick(&edit, Qt::Key_Down);
    QCOMPARE(edit.Date(), QDate(2024, 1, 1));
    edit.setCursorPosition(9); // in the year
    QTest::keyClick(&edit, Qt::Key_Up);
    QCOMPARE(edit.Date(), QDate(2025, 1, 1));
    // Not past the end of the range.
    edit.SetDate(QDate(2300, 12, 31));
    edit.setCursorPosition(4);
    QTest::keyClick(&edit, Qt::Key_Up);
    QCOMPARE(edit.Date(), QDate(2300, 12, 31));
}

void TestWidgets::currencyIsShownAndReadInTheLocaleFormat()
{
    CurrencyFormat us;
    QCOMPARE(us.Format(1234.5), QStringLiteral("$1,234.50"));
    QCOMPARE(us.Format(-3.75), QStringLiteral("-$3.75"));
    QCOMPARE(us.Format(1234567.891), QStringLiteral("$1,234,567.89"));
    bool ok = false;
    QCOMPARE(us.Parse(QStringLiteral("$1,234.50"), &ok), 1234.5);
    QVERIFY(ok);
    QCOMPARE(us.Parse(QStringLiteral("(12.00)"), &ok), -12.0);
    QCOMPARE(us.Parse(QStringLiteral(" 7 "), &ok), 7.0);
    us.Parse(QStringLiteral("12 dollars"), &ok);
    QVERIFY(!ok);

    CurrencyFormat euro;
    euro.symbol = QStringLiteral("\u20AC");
    euro.symbolFirst = false;
    euro.spaceSeparated = true;
    euro.decimalSeparator = QStringLiteral(",");
    euro.thousandsSeparator = QStringLiteral(".");
    QCOMPARE(euro.Format(1234.5), QStringLiteral("1.234,50 \u20AC"));
    QCOMPARE(euro.Parse(QStringLiteral("1.234,50 \u20AC"), &ok), 1234.5);
    QVERIFY(ok);

    CCurrencyEdit edit;
    edit.SetFormat(euro);
    edit.setText(QStringLiteral("19,9"));
    QCOMPARE(edit.Value(&ok), 19.9);
    edit.SetValue(0.125);
    QCOMPARE(edit.text(), QStringLiteral("0,13 \u20AC"));
}

#include "tst_widgets.moc"

int RunWidgetTests(int argc, char** argv)
{
    TestWidgets test;
    return QTest::qExec(&test, argc, argv);
}
