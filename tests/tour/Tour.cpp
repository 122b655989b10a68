// SPDX-License-Identifier: GPL-3.0-or-later
#include "Tour.h"

#include "Model/BWRepository.h"
#include "Model/Session/BWCameraAuthorization.h"
#include "TestFolder.h"
#include "Utils/BWUIUtils.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/Utils/BWControlStyle.h"
#include "Views/Utils/BWIcons.h"
#include "WindowFit.h"

#include <array>
#include <QAction>
#include <QDir>
#include <QMenu>
#include <QMessageBox>
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
class StillStyle : public BWControlStyle {
public:
    using BWControlStyle::BWControlStyle;

    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override
    {
        return hint == SH_Widget_Animation_Duration ? 0 : BWControlStyle::styleHint(hint, option, widget, data);
    }
};

} // namespace

const QList<Look> &Look::all()
{
    using enum Colors;
    static const QList<Look> looks{{u"light"_s},
                                   {u"dark"_s, Dark},
                                   {u"light-1.25"_s, Light, 1.25},
                                   {u"dark-1.5"_s, Dark, 1.5},
                                   {u"light-2"_s, Light, 2},
                                   {u"dark-2"_s, Dark, 2},
                                   {u"contrast"_s, WhiteOnBlack},
                                   {u"contrast-1.25"_s, BlackOnWhite, 1.25},
                                   {u"contrast-2"_s, WhiteOnBlack, 2},
                                   {u"contrast-1.5"_s, BlackOnWhite, 1.5},
                                   {u"large"_s, Light, 1, 13},
                                   {u"adwaita"_s, Light, 1, 10, u"Adwaita"_s},
                                   {u"small"_s, Light, 1, 10, u"Fusion"_s, {1024, 600}},
                                   {u"wide"_s, Dark, 1, 10, u"Fusion"_s, {1920, 1080}}};
    return looks;
}

void Look::setUpScreen(const TestFolder &folder) const
{
    folder.file(u"screen.json"_s,
                u"{\"screens\": [{\"name\": \"screen\", \"x\": 0, \"y\": 0, \"logicalDpi\": 96, \"dpr\": 1, "
                "\"width\": %1, \"height\": %2}]}"_s.arg(qRound(screen.width() * scale))
                    .arg(qRound(screen.height() * scale))
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
    static const std::array<std::array<QColor, 5>, 4> schemes{{{0xeff0f1, 0xeff0f1, Qt::white, 0x3daee9, Qt::white},
                                                               {0x31363b, 0x2a2e32, 0x1b1e20, 0x3daee9, Qt::white},
                                                               {Qt::black, Qt::black, Qt::black, Qt::yellow, Qt::black},
                                                               {Qt::white, Qt::white, Qt::white, Qt::blue, Qt::white}}};
    const auto &[button, ground, base, highlight, selected] = schemes[static_cast<std::size_t>(colors)];
    QPalette palette(button, ground);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::Highlight, highlight);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, Qt::gray);
    palette.setColor(QPalette::HighlightedText, selected);
    QApplication::style()->polish(palette); // as it does with a desktop's
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
    QImage last; // until it has settled, a picture of the whole window
    const auto hasSettled = [&] { // pictures follow a change of the layout a little later
        const QImage shown = window->grab().toImage();
        window->update(); // a picture that only grab() has seen would keep the next one waiting
        return std::exchange(last, shown) == shown;
    };
    if (seen != window || !QTest::qWaitFor(hasSettled, 2000)) { // frames may keep coming
        last = seen->grab().toImage();
        seen->update();
    }
    const QStringList faults = WindowFit::faults(*seen, last);
    for (const QString &fault : faults)
        m_faults << u"%1: %2"_s.arg(name, fault);
    const QString folder = qEnvironmentVariable("BW_TOUR_OUTPUT");
    if (folder.isEmpty())
        return;
    const QString file = u"%1/%2-%3-%4.png"_s.arg(folder, name, m_language, m_look.name);
    QVERIFY2(QDir().mkpath(folder) && last.save(file, "PNG", 80), qPrintable(file));
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
