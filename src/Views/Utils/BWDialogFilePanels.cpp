#include "Views/Utils/BWDialogFilePanels.h"

#include "Utils/BWFilePath.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QStandardPaths>
#include <QStyle>
#include <QTreeView>

using namespace Qt::StringLiterals;

namespace {

/// Qt's own dialog, which has room for the message, and which looks the same wherever the program runs.
class Panel : public QFileDialog {
public:
    Panel(QWidget *window, const QString &title, const QString &message, const QUrl &folder) : QFileDialog(window)
    {
        setAttribute(Qt::WA_DeleteOnClose);
        setOption(DontUseNativeDialog);
        setWindowFlag(Qt::Sheet);
        setWindowModality(Qt::WindowModal);
        setWindowTitle(title);
        resize(sizeHint().expandedTo({760, 480})); // dates and names are to be read
        if (window) // not every desktop gives the keyboard back to a window that is a panel of another
            connect(this, &QDialog::finished, window, &QWidget::activateWindow);
        setAccessibleDescription(message);
        auto *label = new QLabel(message);
        label->setWordWrap(true);
        label->setTextFormat(Qt::PlainText);
        const int margin = style()->pixelMetric(QStyle::PM_LayoutLeftMargin);
        label->setContentsMargins(margin, margin, margin, 0);
        layout()->setMenuBar(label); // above all else
        if (auto *details = findChild<QTreeView *>(u"treeView"_s)) {
            details->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
            details->header()->setSectionResizeMode(0, QHeaderView::Stretch);
        }
        setSidebarUrls(places());
        if (QFileInfo(folder.toLocalFile()).isDir())
            setDirectoryUrl(folder);
        else
            setDirectory(QDir::homePath());
    }

    void accept() override
    {
        // Before the dialog asks whether an existing file is to be replaced.
        const QString file = selectedFiles().value(0);
        const QString suffix = defaultSuffix();
        if (acceptMode() == AcceptSave && !file.isEmpty() && !QFileInfo(file).isDir()
            && QFileInfo(file).suffix() != suffix)
            selectFile(file + u'.' + suffix);
        QFileDialog::accept();
    }

    void begin(BWFilePanels::Chosen chosen)
    {
        connect(this, &QFileDialog::fileSelected, this,
                [chosen = std::move(chosen)](const QString &file) { chosen(BWFilePath::fromLocal(file)); });
        open();
    }

private:
    static QList<QUrl> places()
    {
        QList<QUrl> urls{BWFilePath::fromLocal(QDir::homePath())};
        for (const auto place : {QStandardPaths::DesktopLocation, QStandardPaths::DocumentsLocation,
                                 QStandardPaths::PicturesLocation, QStandardPaths::DownloadLocation}) {
            const QUrl url = BWFilePath::fromLocal(QStandardPaths::writableLocation(place));
            if (!urls.contains(url) && QFileInfo(url.toLocalFile()).isDir())
                urls.append(url);
        }
        return urls;
    }
};

} // namespace

void BWDialogFilePanels::save(QWidget *window, const Save &save, Chosen chosen)
{
    auto *panel = new Panel(window, save.title, save.message, save.folder);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setOption(QFileDialog::ReadOnly); // no new folders, nothing renamed
    panel->setNameFilter(u"%1 (*.%2)"_s.arg(save.extension.toUpper(), save.extension));
    panel->setDefaultSuffix(save.extension);
    panel->selectFile(save.name);
    panel->begin(std::move(chosen));
}

void BWDialogFilePanels::chooseFile(QWidget *window, const File &file, Chosen chosen)
{
    auto *panel = new Panel(window, file.title, file.message, file.folder);
    panel->setFileMode(QFileDialog::ExistingFile);
    panel->setOption(QFileDialog::ReadOnly);
    panel->setNameFilters({u"%1 (%2)"_s.arg(file.types, file.patterns.join(u' ')), u"%1 (*)"_s.arg(file.allFiles)});
    panel->begin(std::move(chosen));
}

void BWDialogFilePanels::chooseFolder(QWidget *window, const Folder &folder, Chosen chosen)
{
    auto *panel = new Panel(window, folder.title, folder.message, folder.folder);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    panel->begin(std::move(chosen));
}
