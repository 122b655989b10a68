// SPDX-License-Identifier: GPL-3.0-or-later
#include "Contract.h"
#include "V4L2Fixture.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace {

/// The first camera of the kernel's module vivid, which is plugged in by binding its driver.
class VividFixture : public V4L2Fixture {
public:
    VividFixture() : V4L2Fixture(u"vivid-000-vid-cap"_s) { }

    void plugIn() override { bind(true); }
    void unplug() override { bind(false); }
    bool hasButton() const override { return false; }
    void pressButton() override { }
    bool isPushed() const override { return false; }
    void pushFrames(int) override { }

private:
    void bind(bool bound)
    {
        if (bound == m_bound)
            return;
        QFile file(u"/sys/bus/platform/drivers/vivid/%1"_s.arg(bound ? u"bind"_s : u"unbind"_s));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write("vivid.0") < 0)
            qFatal("%s: %s", qPrintable(file.fileName()), qPrintable(file.errorString()));
        m_bound = bound;
    }

    bool m_bound = true;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    VividFixture fixture;
    return runContract(fixture, QCoreApplication::arguments());
}
