// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Session/BWStartProblemText.h"

#include "Model/Texts/BWLocalizationManager.h"

#include <algorithm>
#include <QStringList>

using namespace Qt::StringLiterals;

QString BWStartProblemText::title(BWLocalizationManager &texts)
{
    return texts.text(u"camera_window"_s, u"camera_in_use_title"_s, u"Cannot access camera at this time"_s);
}

QString BWStartProblemText::reason(const BWStartProblem &problem, BWLocalizationManager &texts)
{
    using Kind = BWStartProblem::Kind;
    switch (problem.kind) {
    case Kind::InUse:
        if (problem.holder.isEmpty())
            return {};
        return texts.text(u"camera_window"_s, u"camera_in_use_by"_s, u"In use by: %1"_s).arg(problem.holder);
    case Kind::NoBandwidth:
        return texts.text(u"camera_window"_s, u"camera_no_bandwidth"_s,
                          u"There is not enough USB bandwidth for this camera at this size. Unplug another camera, use "
                          "another USB port, or choose a smaller resolution."_s);
    case Kind::NoPermission:
        return texts.text(u"camera_window"_s, u"camera_no_permission"_s,
                          u"You do not have permission to open this camera."_s);
    case Kind::NoDriver:
        return texts.text(u"camera_window"_s, u"camera_no_driver"_s,
                          u"The driver for this camera is not loaded on this computer. An administrator can load it "
                          "with the command “sudo modprobe uvcvideo”."_s);
    case Kind::Failed:
        return texts.text(u"camera_window"_s, u"camera_failed"_s,
                          u"The camera reports a fault. Unplug it and plug it in again."_s);
    case Kind::None:
    case Kind::Gone:
        break;
    }
    return {};
}

QString BWStartProblemText::permissionFix(BWLocalizationManager &texts)
{
    return texts.text(u"camera_window"_s, u"camera_access_denied_fix"_s,
                      u"On this computer members of the group “video” may use cameras. An administrator can add you "
                      "with the command “sudo usermod -aG video USER”; log in again afterwards. Or the udev rule "
                      "that comes with BrimwellPro gives the camera to whoever is logged in at the screen."_s);
}

QString BWStartProblemText::obstacle(const QList<BWBlockedCamera> &blocked, BWLocalizationManager &texts)
{
    using Kind = BWStartProblem::Kind;
    QStringList paragraphs;
    for (const BWBlockedCamera &camera : blocked) {
        const QString why = camera.problem.kind == Kind::InUse
            ? texts.text(u"camera_window"_s, u"camera_blocked_in_use"_s,
                         u"Another program uses this camera. Please close that program."_s)
            : reason(camera.problem, texts);
        paragraphs << u"%1\n%2"_s.arg(camera.name, why);
    }
    paragraphs.removeDuplicates(); // of a device with several nodes
    if (std::any_of(blocked.begin(), blocked.end(),
                    [](const BWBlockedCamera &camera) { return camera.problem.kind == Kind::NoPermission; }))
        paragraphs << permissionFix(texts);
    return paragraphs.join(u"\n\n"_s);
}

QString BWStartProblemText::status(const BWStartProblem &problem, BWLocalizationManager &texts)
{
    const QString why = reason(problem, texts);
    return why.isNull() ? title(texts) : u"%1\n%2"_s.arg(title(texts), why);
}
