// SPDX-License-Identifier: GPL-3.0-or-later
#include "MeasuringBench.h"

#include "ActiveWindow.h"

QString calibrationsOfOneName()
{
    BWCalibrations all(
        {{u"dx10"_s, QLatin1String(type)}, {u"mx61"_s, QLatin1String(type)}, {u"mx63"_s, QLatin1String(type)}});
    for (const auto &[product, width] : {std::pair(u"mx61"_s, 10.0), std::pair(u"mx63"_s, 4.0)})
        all.add(product, all.madeIn(pictureSize, product, {u"50x"_s, width, 0, {}}));
    return all.toJson();
}

Bench::Bench(const QString &identifier)
{
    window.localizeWithManager(texts);
    useProduct(identifier);
    product.setCamera(cameras[0]);
    product.reload();
    window.resize(977, 550);
    window.show();
    show(u"a.jpg"_s);
    measuring.setOpen(true);
    activateAtOnce(&window);
    BWUIUtils::setAlertPresenter(this);
}

void Bench::waitForPicture()
{
    const auto laidOut = [this] {
        return view.scene()
            .mainRequest(view.viewport()->size(), view.scrollPosition(), view.devicePixelRatioF())
            .pictureToViewport();
    };
    QTRY_VERIFY((view.viewport()->repaint(), view.pictureToViewport() == laidOut()));
}

void Bench::pick(const QString &kind) const
{
    for (QAction *tool : window.menu().measuring->tools()) {
        if (tool->data().toString() == kind)
            tool->trigger();
    }
}

void Bench::mouse(QEvent::Type what, QPointF where, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) const
{
    const bool isUp = what == QEvent::MouseButtonRelease;
    const bool isMove = what == QEvent::MouseMove;
    QMouseEvent event(what, where, layer().mapToGlobal(where), isMove ? Qt::NoButton : button,
                      isUp ? Qt::NoButton : Qt::MouseButtons(button), modifiers);
    QApplication::sendEvent(&layer(), &event);
}

void Bench::measure(const QString &kind, const QList<QPoint> &points) const
{
    pick(kind);
    for (const QPoint &point : points)
        click(at(point.x(), point.y()));
    if (BWMeasurementKind::find(kind)->mostPoints == BWMeasurementKind::anyNumber)
        mouse(QEvent::MouseButtonDblClick, at(points.last().x(), points.last().y()));
}

void Bench::act(const QString &what)
{
    const QHash<QString, std::function<void()>> acts{
        {u"line"_s,
         [this] {
             measure(u"length"_s, {{160, 100}, {480, 100}});
         }},
        {u"live"_s, [this] { scene.showLive(); }},
        {u"album"_s, [this] { show(u"b.jpg"_s); }},
        {u"file"_s,
         [this] {
             measuring.setMeasurements({{u"length"_s, {{0.25, 0.1}, {0.75, 0.1}}}}, {u"50x"_s, 4, 0, {}});
         }},
        {u"choose"_s, [this] { Q_EMIT strip().scalePicked(0); }},
        {u"none"_s, [this] { Q_EMIT strip().scalePicked(-1); }},
        {u"unplug"_s, [this] { product.setCamera({}), liveView.updateImageDisplay(); }},
        {u"other camera"_s, [this] { product.setCamera(cameras[1]), product.cameraStarted(); }},
        {u"twin"_s, [this] { product.setCamera(cameras[2]), product.cameraStarted(); }},
        {u"cut"_s,
         [this] {
             show(u"c.jpg"_s, {400, 400});
         }},
        {u"quit"_s, [this] { measuring.completeText(); }},
        {u"undone"_s, [this] { window.menu().measuring->undo->trigger(); }},
        {u"tool"_s, [this] { pick(u"length"_s); }},
        {u"closed"_s, [this] { measuring.setOpen(false); }},
        {u"bar"_s, [this] { window.menu().measuring->scaleBar->trigger(); }},
        {u"ask"_s, [this] { window.menu().measuring->calibrate->trigger(); }},
        {u"answer"_s,
         [this] {
             auto *dialog = window.findChild<BWCalibrationDialog *>();
             const auto fields = dialog->findChildren<QLineEdit *>();
             fields.first()->setText(u"8 mm"_s);
             fields.last()->setText(u"new"_s);
             dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Save)->click();
         }},
        {u"import"_s, [this] { useProduct(u"mx63"_s), product.reloadImported(); }},
        {u"zoomed"_s, [this] { liveView.zoomIn(); }},
        {u"fit"_s, [this] { liveView.fitToWindow(); }},
        {u"turned"_s, [this] { liveView.onRotate(u"90"_s); }},
        {u"mirrored"_s, [this] { liveView.onFlip(1); }},
        {u"small"_s, [this] { window.resize(window.minimumSizeHint()); }},
        {u"compared"_s, [this] {
             scene.compareWith(picture());
             window.comparisonStrip().show();
             liveView.setComparison(BWScene::Mode::Divider, 0.6);
         }}};
    if (acts.contains(what))
        acts[what]();
    else if (config.productByIdentifier(what))
        useProduct(what), product.reload();
    else
        freeze(BWResolution::fromResolutionString(what)->dimensions());
}

QString Bench::list() const
{
    QStringList all;
    for (const BWMeasurement &one : measuring.measurements()) {
        QString text = one.kind + one.text;
        for (const QPointF &point : one.points)
            text += u" %1,%2"_s.arg(std::floor(point.x() * pictureSize.width() + 1e-6))
                        .arg(std::floor(point.y() * pictureSize.width() + 1e-6));
        all << text;
    }
    return all.join(u"; "_s);
}
