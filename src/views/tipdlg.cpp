#include "views/tipdlg.h"

#include "platform/messages.h"
#include "platform/settingsstore.h"
#include "views/icons.h"
#include "views/qtconvert.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

#include <sys/stat.h>

#include <ctime>

namespace
{

constexpr size_t kMaxLine = 1000;
constexpr size_t kTopicLength = 6;

bool Skipped(const std::string& line)
{
    return line.empty() || line[0] == '\t' || line[0] == '\n' || line[0] == '\r' || line[0] == ';';
}

} // namespace

CTipsFile::CTipsFile(platform::SettingsStore& store, const std::string& path) : m_store(store)
{
    m_file = path.empty() ? nullptr : std::fopen(path.c_str(), "rb");
    if (m_file == nullptr)
        return;
    long offset = m_store.GetInt("Tip", "FilePos", 0);
    struct stat st = {};
    if (::stat(path.c_str(), &st) == 0)
    {
        char buffer[64] = {};
        const std::time_t modified = st.st_mtime;
        ctime_r(&modified, buffer);
        std::string stamp = buffer;
        while (!stamp.empty() && std::isspace(static_cast<unsigned char>(stamp.back())))
            stamp.pop_back();
        // A replaced tips file starts over at its first tip.
        if (stamp != m_store.GetString("Tip", "TimeStamp", std::string()))
        {
            offset = 0;
            m_store.SetString("Tip", "TimeStamp", stamp);
        }
    }
    if (std::fseek(m_file, offset, SEEK_SET) != 0)
        m_error = platform::LoadString(151);
}

CTipsFile::~CTipsFile()
{
    if (m_file)
    {
        m_store.SetInt("Tip", "FilePos", int(Offset()));
        std::fclose(m_file);
    }
}

long CTipsFile::Offset() const
{
    return m_file ? std::ftell(m_file) : 0;
}

bool CTipsFile::Next(std::string& topic, std::string& text)
{
    if (m_file == nullptr)
        return false;
    std::string line;
    bool wrapped = false;
    for (;;)
    {
        line.clear();
        int c = 0;
        while (line.size() < kMaxLine && (c = std::fgetc(m_file)) != EOF)
        {
            line += char(c);
            if (c == '\n')
                break;
        }
        if (line.empty() && c == EOF)
        {
            // At the end the tips begin again; a file without a single tip stops here.
            if (wrapped || std::fseek(m_file, 0, SEEK_SET) != 0)
            {
                m_error = platform::LoadString(151);
                return false;
            }
            wrapped = true;
            continue;
        }
        if (!Skipped(line))
            break;
    }
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.pop_back();
    topic = line.substr(0, std::min(kTopicLength, line.size()));
    text = line.size() > kTopicLength ? line.substr(kTopicLength) : std::string();
    return true;
}

QString FindTipsFile()
{
    const QString dir = QCoreApplication::applicationDirPath();
    const QStringList candidates = {
        QStringLiteral("tips.txt"),
        dir + QStringLiteral("/tips.txt"),
        dir + QStringLiteral("/../share/quorvane/tips.txt"),
        QStringLiteral(QV_INSTALL_DATA_DIR "/tips.txt"),
    };
    for (const QString& path : candidates)
        if (QFileInfo(path).isFile())
            return QFileInfo(path).absoluteFilePath();
    return QString();
}

CTipDlg::CTipDlg(platform::SettingsStore& store, QWidget* parent, const QString& path)
    : QDialog(parent), m_store(store), m_tips(new CTipsFile(store, FromQ(path.isEmpty() ? FindTipsFile() : path))),
      m_text(new QLabel(this)), m_next(new QPushButton(tr("&Next Tip"), this)),
      m_more(new QPushButton(tr("&Tell Me More"), this)),
      m_showAtStartUp(new QCheckBox(tr("&Show Tips on StartUp"), this))
{
    setWindowTitle(tr("Tip of the Day"));
    auto* layout = new QVBoxLayout(this);
    auto* panel = new QFrame(this);
    panel->setFrameShape(QFrame::StyledPanel);
    panel->setAutoFillBackground(true);
    panel->setBackgroundRole(QPalette::Base);
    auto* panelLayout = new QHBoxLayout(panel);
    auto* bulb = new QLabel(panel);
    bulb->setPixmap(icons::AppIcon().pixmap(48, 48));
    bulb->setAlignment(Qt::AlignTop);
    panelLayout->addWidget(bulb);
    auto* textColumn = new QVBoxLayout;
    auto* heading = new QLabel(tr("Did you know..."), panel);
    QFont headingFont = heading->font();
    headingFont.setBold(true);
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.3);
    heading->setFont(headingFont);
    textColumn->addWidget(heading);
    m_text->setObjectName(QStringLiteral("tipText"));
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_text->setMinimumSize(340, 110);
    textColumn->addWidget(m_text, 1);
    panelLayout->addLayout(textColumn, 1);
    layout->addWidget(panel, 1);

    auto* row = new QHBoxLayout;
    m_showAtStartUp->setChecked(store.GetInt("Tip", "StartUp", 0) == 0);
    row->addWidget(m_showAtStartUp);
    row->addStretch(1);
    row->addWidget(m_more);
    row->addWidget(m_next);
    auto* close = new QPushButton(tr("&Close"), this);
    close->setDefault(true);
    row->addWidget(close);
    layout->addLayout(row);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_next, &QPushButton::clicked, this, &CTipDlg::ShowNextTip);
    connect(m_more, &QPushButton::clicked, this, [this] {
        const QString manual = QCoreApplication::applicationDirPath() + QStringLiteral("/../share/doc/quorvane/manual.html");
        QUrl url = QUrl::fromLocalFile(QFileInfo(manual).absoluteFilePath());
        url.setFragment(QStringLiteral("topic-") + m_topic.trimmed());
        QDesktopServices::openUrl(url);
    });

    if (!m_tips->IsOpen())
    {
        m_text->setText(ToQ(platform::LoadString(142)));
        m_next->setEnabled(false);
        m_more->setEnabled(false);
    }
    else if (!m_tips->Error().empty())
    {
        m_text->setText(ToQ(m_tips->Error()));
        m_more->setEnabled(false);
    }
    else
        ShowNextTip();
}

CTipDlg::~CTipDlg()
{
    delete m_tips;
}

QString CTipDlg::TipText() const
{
    return m_text->text();
}

void CTipDlg::ShowNextTip()
{
    std::string topic, text;
    if (!m_tips->Next(topic, text))
    {
        m_text->setText(ToQ(m_tips->Error()));
        m_more->setEnabled(false);
        return;
    }
    m_topic = ToQ(topic);
    m_text->setText(ToQ(text));
    m_more->setEnabled(topic.find_first_not_of(' ') != std::string::npos);
}

void CTipDlg::done(int result)
{
    m_store.SetInt("Tip", "StartUp", m_showAtStartUp->isChecked() ? 0 : 1);
    QDialog::done(result);
}
