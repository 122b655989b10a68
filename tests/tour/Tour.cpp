// SPDX-License-Identifier: GPL-3.0-or-later
#include "Tour.h"

#include "Model/BWRepository.h"
#include "Model/Session/BWCameraAuthorization.h"
#include "TestFolder.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/Utils/BWIcons.h"
#include "WindowFit.h"

#include <QAction>
#include <QDir>
#include <QMenu>
#include <QMessageBox>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyleFactory>
#include <QTest>
#include <QTimer>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Type = BWSimulatedCameraOptions::Type;

namespace {

/// As for users who have switched animations off, so that nothing is seen halfway.
class StillStyle : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override
    {
        return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, data);
    }
};

} // namespace

const QList<Look> &Look::all()
{
    static const QList<Look> looks{{u"light"_s},
                                   {u"dark"_s, true},
                                   {u"light-2"_s, false, 2},
                                   {u"dark-2"_s, true, 2},
                                   {u"large"_s, false, 1, 13},
                                   {u"adwaita"_s, false, 1, 10, u"Adwaita"_s},
                                   {u"small"_s, false, 1, 10, u"Fusion"_s, {1024, 600}},
                                   {u"wide"_s, true, 1, 10, u"Fusion"_s, {1920, 1080}}};
    return looks;
}

void Look::setUpScreen(const TestFolder &folder) const
{
    folder.file(u"screen.json"_s,
                u"{\"screens\": [{\"name\": \"screen\", \"x\": 0, \"y\": 0, \"logicalDpi\": 96, \"dpr\": 1, "
                "\"width\": %1, \"height\": %2}]}"_s.arg(screen.width() * scale)
                    .arg(screen.height() * scale)
                    .toUtf8());
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + folder.path(u"screen.json"_s).toUtf8());
    qputenv("QT_SCALE_FACTOR", QByteArray::number(scale));
}

void Look::dressUp() const
{
    if (!QStyleFactory::keys().contains(style, Qt::CaseInsensitive))
        qFatal("the style %s is missing; install the test packages of tools/packages.txt", qPrintable(style));
    QApplication::setStyle(new StillStyle(style));
    QApplication::setFont(QFont(u"DejaVu Sans"_s, pointSize));
    QPalette palette(QColor(dark ? 0x31363b : 0xeff0f1), QColor(dark ? 0x2a2e32 : 0xeff0f1));
    palette.setColor(QPalette::Base, dark ? QColor(0x1b1e20) : Qt::white);
    palette.setColor(QPalette::Highlight, 0x3daee9);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, Qt::gray);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    QApplication::setPalette(palette);
    QIcon::setThemeSearchPaths({u"/usr/share/icons"_s}); // a desktop would do that
    BWIcons::install(*qApp);
}

void Tour::begin()
{
    QList<BWSimulatedCameraOptions> attached;
    for (const Type type : {Type::High, Type::Ultra, Type::Regular, Type::Wireless, Type::DX20, Type::High})
        attached << BWSimulatedCameraOptions{
            .type = type, .pacing = BWSimulatedCameraOptions::Pacing::Manual, .pendingSeconds = 1, .pluggedIn = false};
    auto backend = BWSimulatedBackend::create(attached, clock);
    cameras = backend->cameras();
    AppDelegate::Options options;
    options.simulatedCameras = cameras.mid(0, 2);
    options.backends.push_back(std::move(backend));
    options.authorization = std::make_unique<BWNoAuthorizationNeeded>();
    options.openUrl = [](const QUrl &) { return false; };
    options.quit = [this] { m_hasQuit = true; };
    options.technician = true;
    options.clock = &clock;
    delegate = std::make_unique<AppDelegate>(std::move(options));
    alertPresenter = std::make_unique<BWMessageBoxAlertPresenter>(BWRepository::singleton().localizationManager(),
                                                                  [this] { return delegate->cameraWindow(); });
    BWUIUtils::setAlertPresenter(alertPresenter.get());
    delegate->applicationDidFinishLaunching();
    QTRY_VERIFY_WITH_TIMEOUT((window = delegate->cameraWindow()) && window->isVisible(), patience);
    clock.advance(300ms); // without a picture, the launch is complete by then
    constexpr QSize usualScreen(1280, 800);
    if (m_look.screen.width() > usualScreen.width()) // a user there would not leave it small
        window->resize(m_look.screen * 3 / 4);
}

void Tour::end()
{
    // Quitting asks if measurements could not be kept: the tour replaces a file below them.
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, &answer, [] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            qWarning() << "answered:" << box->text() << box->informativeText();
            box->buttons().first()->click();
        }
    });
    answer.start(100ms);
    delegate->applicationShouldTerminate();
    QTRY_VERIFY_WITH_TIMEOUT(m_hasQuit, patience);
    delegate.reset();
    BWUIUtils::setAlertPresenter(nullptr);
}

void Tour::see(QWidget *seen, const QString &name) const
{
    QVERIFY2(seen, qPrintable(name));
    for (int i = 0; i < 5; ++i) // layouts within layouts
        QCoreApplication::processEvents();
    QImage last;
    const auto hasSettled = [&] { // pictures follow a change of the layout a little later
        const QImage shown = window->grab().toImage();
        window->update(); // a picture that only grab() has seen would keep the next one waiting
        return std::exchange(last, shown) == shown;
    };
    if (seen == window)
        Q_UNUSED(QTest::qWaitFor(hasSettled, 2000)) // unless frames keep coming
    const QStringList faults = WindowFit::faults(*seen);
    for (const QString &fault : faults)
        m_faults << u"%1: %2"_s.arg(name, fault);
    const QPixmap picture = seen->grab();
    seen->update();
    const QString folder = qEnvironmentVariable("BW_TOUR_OUTPUT");
    if (folder.isEmpty())
        return;
    const QString file = u"%1/%2-%3-%4.png"_s.arg(folder, name, m_language, m_look.name);
    QVERIFY2(QDir().mkpath(folder) && picture.save(file, "PNG", 80), qPrintable(file));
}

/// Only then: once a test has failed, nothing is waited for any more.
void Tour::reportFaults()
{
    const QStringList faults = std::exchange(m_faults, {});
    for (const QString &fault : faults)
        QTest::qFail(qPrintable(fault), __FILE__, __LINE__);
}

void Tour::seeNarrowest(const QString &name) const
{
    const QSize usual = window->size();
    see(window, name);
    window->resize(window->minimumSizeHint());
    see(window, name + u"-narrowest"_s);
    window->resize(usual);
}

void Tour::setFullScreen(bool full)
{
    if (full)
        m_usual = window->size();
    window->menu().fullScreen->trigger();
    QTRY_COMPARE(window->isFullScreen(), full);
    if (!full)
        window->resize(m_usual);
}

void Tour::seeMenu(QMenu *menu, const QString &name) const
{
    menu->popup(window->mapToGlobal(QPoint(0, 20)));
    see(menu, name);
    menu->close();
}

void Tour::plugIn(int camera)
{
    cameras[camera]->plugIn();
    clock.advance(1500ms);
}

void Tour::showFrames() const
{
    const auto before = delegate->renderer().statistics().shown;
    const auto isShown = [&] {
        cameras[0]->pushFrames(1);
        return delegate->renderer().statistics().shown > before;
    };
    QVERIFY(QTest::qWaitFor(isShown, patience));
}

void Tour::waitForThumbnails(BWThumbnailTableView &grid, int count)
{
    QTRY_COMPARE_WITH_TIMEOUT(grid.elementCount(), count, patience);
    const int last = count - 1;
    const auto isThere = [&] {
        clock.advance(100ms);
        return grid.dataSource()->objectValueForTableColumn(grid, last % 2, last / 2).state
            == BWThumbnailValue::State::Picture;
    };
    QTRY_VERIFY_WITH_TIMEOUT(isThere(), patience);
}
