// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Session/BWCameraAuthorization.h"
#include "Rows.h"

#include <cerrno>
#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using Status = BWCameraAuthorization::Status;

namespace {

struct Node {
    QByteArray index; // as sysfs has it; null if it has none
    QByteArray title;
    int error; // of opening it
};

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) && file.write(content) >= 0);
}

} // namespace

class TestCameraAccess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void statusOfTheNodes_data()
    {
        const Rows<QList<Node>, Status> row;
        const Node camera{"0\n", "Microscope\n", 0};
        const Node denied{"0\n", "Microscope\n", EACCES};
        const Node forbidden{"0\n", "Microscope\n", EPERM};
        row("none", {}, Status::Authorized);
        row("one of two", {denied, camera}, Status::Authorized);
        row("permissions", {denied}, Status::Denied);
        row("policy", {forbidden}, Status::Restricted);
        row("permissions can be mended", {forbidden, denied}, Status::Denied);
        row("busy is no matter of permission", {{"0\n", "Microscope\n", EBUSY}}, Status::Authorized);
        row("nothing in sysfs", {{{}, {}, EACCES}}, Status::Denied);
        row("metadata may be opened", {denied, {"1\n", "Microscope\n", 0}}, Status::Denied);
        row("no cameras at all", {{"0\n", "bcm2835-codec-decode\n", EACCES}, {"0\n", "vivid-000-vid-out\n", EPERM}},
            Status::Authorized);
    }
    void statusOfTheNodes()
    {
        const auto [nodes, status] = Rows<QList<Node>, Status>::current();
        QTemporaryDir folder;
        for (int i = 0; i < nodes.size(); ++i) {
            const QString name = u"video%1"_s.arg(i);
            write(folder.filePath(u"dev/"_s + name), {});
            if (nodes[i].index.isNull())
                continue;
            write(folder.filePath(u"class/%1/index"_s.arg(name)), nodes[i].index);
            write(folder.filePath(u"class/%1/name"_s.arg(name)), nodes[i].title);
        }
        const BWDeviceNodeAuthorization authorization(
            folder.filePath(u"dev"_s), folder.filePath(u"class"_s),
            [&nodes](const QString &path) { return nodes[path.back().digitValue()].error; });
        QCOMPARE(authorization.authorizationStatus(), status);
    }

    void nodesAreReallyOpened()
    {
        QTemporaryDir folder;
        const QString node = folder.filePath(u"video0"_s);
        write(node, {});
        const BWDeviceNodeAuthorization authorization(folder.path(), u"/none"_s);
        QCOMPARE(authorization.authorizationStatus(), Status::Authorized);
        QCOMPARE(::chmod(QFile::encodeName(folder.path()).constData(), 0755), 0);
        QCOMPARE(::chmod(QFile::encodeName(node).constData(), 0444), 0); // to read is not enough
        ::setfsuid(65534); // root may open everything
        const auto restore = qScopeGuard([] { ::setfsuid(::geteuid()); });
        QCOMPARE(authorization.authorizationStatus(), Status::Denied);
    }
};

QTEST_GUILESS_MAIN(TestCameraAccess)
#include "tst_BWCameraAuthorization.moc"
