// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/BWFilePanels.h"

#include "Utils/BWFilePath.h"
#include "Views/Utils/Windows/BWUtilityPanel.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSplitter>
#include <QStandardPaths>
#include <QStyle>
#include <QTreeView>

using namespace Qt::StringLiterals;

namespace {

/// Qt's own dialog, which has room for the message and looks the same on every desktop.
class Panel : public QFileDialog {
public:
    Panel(QWidget *window, const QString &title, const QString &message, const QUrl &folder) : QFileDialog(window)
    {
        setAttribute(Qt::WA_DeleteOnClose);
        setOption(DontUseNativeDialog);
        setWindowFlag(Qt::Sheet);
        setWindowModality(Qt::WindowModal);
        setWindowTitle(title);
        resize(sizeHint().expandedTo({760, 480})); // so that dates and names can be read
        returnBWKeyboardAfter(*this);
        setAccessibleDescription(message);
        auto *label = new QLabel(message);
        label->setWordWrap(true);
        label->setTextFormat(Qt::PlainText);
        const int margin = style()->pixelMetric(QStyle::PM_LayoutLeftMargin);
        label->setContentsMargins(margin, margin, margin, 0);
        layout()->setMenuBar(label); // above everything else
        if (auto *details = findChild<QTreeView *>(u"treeView"_s)) {
            details->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
            details->header()->setSectionResizeMode(0, QHeaderView::Stretch);
        }
        if (auto *splitter = findChild<QSplitter *>(u"splitter"_s)) {
            const int sidebar = fontMetrics().averageCharWidth() * 20; // so that the names of places can be read
            splitter->setSizes({sidebar, width() - sidebar});
        }
        setSidebarUrls(places());
        if (QFileInfo(folder.toLocalFile()).isDir())
            setDirectoryUrl(folder);
        else
            setDirectory(QDir::homePath());
    }

    void accept() override
    {
        const QString folder = newFolder();
        if (folder.isNull())
            return QFileDialog::accept();
        if (m_make(BWFilePath::fromLocal(folder)))
            choose(folder);
    }

    void begin(BWFilePanels::Chosen chosen)
    {
        connect(this, &QFileDialog::fileSelected, this,
                [chosen = std::move(chosen)](const QString &file) { chosen(BWFilePath::fromLocal(file)); });
        open();
    }

    /// Makes the folder that the user types; Qt's dialog would only report that it does not exist.
    void makeFolders(std::function<bool(const QUrl &)> make)
    {
        m_make = std::move(make);
        // Runs after the dialog's own check for the folder.
        connect(m_name, &QLineEdit::textChanged, this, [this](const QString &name) {
            if (QPushButton *choose = findChild<QDialogButtonBox *>(u"buttonBox"_s)->button(QDialogButtonBox::Open))
                choose->setEnabled(choose->isEnabled() || !name.trimmed().isEmpty());
        });
    }

protected:
    /// Accepts a path that the dialog itself would refuse, or ask about again.
    void choose(const QString &path)
    {
        Q_EMIT fileSelected(path);
        done(Accepted);
    }

    QLineEdit *const m_name = findChild<QLineEdit *>(u"fileNameEdit"_s);

private:
    /// The folder that the user typed; null if it exists or the field is empty.
    QString newFolder() const
    {
        const QString name = m_name->text().trimmed();
        if (!m_make || name.isEmpty() || name.startsWith(u'~'))
            return {};
        const QString path = QDir::cleanPath(directory().absoluteFilePath(name));
        return QFileInfo(path).isDir() ? QString() : path;
    }

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

    std::function<bool(const QUrl &)> m_make; ///< empty where no folders can be made
};

/// Adds the extension before the user confirms, so that the name shown is the one the file gets.
class SavePanel : public Panel {
public:
    SavePanel(QWidget *window, const BWFilePanels::Save &save)
        : Panel(window, save.title, save.message, save.folder),
          m_extension(save.extension),
          m_otherExtension(save.otherExtension)
    {
        setAcceptMode(AcceptSave);
        setFileMode(AnyFile);
        setOption(ReadOnly); // no new folders, nothing renamed
        QStringList filters;
        for (const QString &extension : {save.extension, save.otherExtension}) {
            if (!extension.isNull())
                filters << u"%1 (*.%2)"_s.arg(extension.toUpper(), extension);
        }
        setNameFilters(filters);
        selectFile(save.name);
    }

    void accept() override
    {
        // The dialog itself reads quotes as separators between names.
        const QString typed =
            m_name->text().contains(u'"') ? directory().absoluteFilePath(m_name->text()) : selectedFiles().value(0);
        if (typed.isEmpty() || QFileInfo(typed).isDir())
            return Panel::accept(); // enters the folder
        const QFileInfo file(BWDialogFilePanels::withExtension(typed, extensionFor(typed)));
        // Not by selectFile(), which does not change the field while it has the focus.
        const bool isHere = file.absolutePath() == directory().absolutePath();
        m_name->setText(isHere ? file.fileName() : file.absoluteFilePath());
        if (file.isDir())
            return Panel::accept();
        // The dialog itself would do nothing at all if the name is too long.
        if (file.exists())
            askToReplace(file);
        else
            choose(file.absoluteFilePath());
    }

private:
    /// One that was typed counts more than one that was chosen.
    QString extensionFor(const QString &typed) const
    {
        if (m_otherExtension.isNull())
            return m_extension;
        const QString suffix = QFileInfo(typed).suffix();
        for (const QString &extension : {m_extension, m_otherExtension}) {
            if (suffix.compare(extension, Qt::CaseInsensitive) == 0)
                return extension;
        }
        return selectedNameFilter().startsWith(m_otherExtension.toUpper()) ? m_otherExtension : m_extension;
    }

    void askToReplace(const QFileInfo &file)
    {
        const QString question =
            tr("%1 already exists.\nDo you want to replace it?").arg(file.fileName()); // translated by Qt
        auto *box =
            new QMessageBox(QMessageBox::Warning, windowTitle(), question, QMessageBox::Yes | QMessageBox::No, this);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setTextFormat(Qt::PlainText);
        box->setDefaultButton(QMessageBox::No);
        connect(box, &QDialog::finished, this, [this, file](int answer) {
            if (answer == QMessageBox::Yes)
                return choose(file.absoluteFilePath());
            m_name->setFocus();
            m_name->selectAll(); // for another name
        });
        box->open();
    }

    const QString m_extension;
    const QString m_otherExtension;
};

} // namespace

QString BWDialogFilePanels::withExtension(const QString &path, const QString &extension)
{
    // Pictures, movies and archives. Anything else after a dot belongs to the name: "Sample 12.3".
    static const QStringList others{u"jpg"_s, u"jpeg"_s, u"jpe"_s,  u"jfif"_s, u"png"_s,  u"gif"_s,  u"bmp"_s,
                                    u"tif"_s, u"tiff"_s, u"webp"_s, u"heic"_s, u"heif"_s, u"mov"_s,  u"mp4"_s,
                                    u"m4v"_s, u"avi"_s,  u"mkv"_s,  u"webm"_s, u"mpg"_s,  u"mpeg"_s, u"wmv"_s,
                                    u"zip"_s, u"7z"_s,   u"rar"_s,  u"tar"_s,  u"gz"_s,   u"tgz"_s};
    QString name = QDir::cleanPath(path).trimmed();
    for (;;) {
        const QFileInfo file(name);
        const QString suffix = file.completeBaseName().isEmpty() ? QString() : file.suffix();
        if (suffix.compare(extension, Qt::CaseInsensitive) == 0)
            return name;
        if (!name.endsWith(u'.') && !others.contains(suffix, Qt::CaseInsensitive))
            return name + u'.' + extension;
        name.chop(suffix.size() + 1);
    }
}

void BWDialogFilePanels::save(QWidget *window, const Save &save, Chosen chosen)
{
    auto *panel = new SavePanel(window, save);
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
    panel->makeFolders(folder.make);
    panel->begin(std::move(chosen));
}
