// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/device/BWVideoControls.h"

#include "base/BWDriverLog.h"
#include "BWACUDriver/BWCameraSetting.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <linux/videodev2.h>

namespace {

/// Automatic modes that the program does not offer; setting their control switches them off for good.
struct HiddenMaster {
    int identifier;
    uint32_t id;
};

constexpr std::array hiddenMasters{
    HiddenMaster{BWSettingHue, V4L2_CID_HUE_AUTO},
    HiddenMaster{BWSettingGain, V4L2_CID_AUTOGAIN},
};

bool hasMaster(int identifier)
{
    return BWCameraSetting::automaticModeFor(identifier)
        || std::any_of(hiddenMasters.begin(), hiddenMasters.end(),
                       [identifier](const HiddenMaster &master) { return master.identifier == identifier; });
}

} // namespace

BWVideoControls::BWVideoControls(const std::vector<BWVideoControl> &controls, QString name) : m_name(std::move(name))
{
    for (const BWVideoControl &control : controls) {
        if (control.id != 0)
            m_controls.push_back({control, control.info.value});
    }
}

double BWVideoControls::set(const BWKernelFile &node, int identifier, double value)
{
    Control *control = find(identifier);
    if (!control)
        return 0;
    holdMaster(node, identifier);
    // One per call: a single rejected control would keep all others of the call from being set.
    const int32_t wanted = toDevice(*control, value);
    const int result = send(node, control->ability.id, wanted);
    if (result >= 0)
        control->value = toProgram(*control, wanted);
    readOthers(node, identifier, result);
    if (result < 0 && result != -ENODEV && !(result == -EACCES && isMoved(*control)))
        complain(*control, value, result);
    const auto taken = readValue(node, *control);
    if (taken)
        control->value = *taken;
    return control->value;
}

double BWVideoControls::value(int identifier) const
{
    const Control *control = find(identifier);
    return control ? control->value : 0;
}

void BWVideoControls::watch(const BWKernelFile &node)
{
    for (Control &control : m_controls) {
        // A device need not support events.
        v4l2_event_subscription subscription{};
        subscription.type = V4L2_EVENT_CTRL;
        subscription.id = control.ability.id;
        node.ioctl(VIDIOC_SUBSCRIBE_EVENT, subscription);
        read(node, control);
    }
}

bool BWVideoControls::takeEvents(const BWKernelFile &node)
{
    bool any = false;
    v4l2_event event{};
    while (node.ioctl(VIDIOC_DQEVENT, event) >= 0) {
        any = true;
        const auto control = std::find_if(m_controls.begin(), m_controls.end(), [&event](const Control &candidate) {
            return candidate.ability.id == event.id;
        });
        if (event.type != V4L2_EVENT_CTRL || !(event.u.ctrl.changes & V4L2_EVENT_CTRL_CH_VALUE)
            || control == m_controls.end())
            continue;
        // When its master is switched, a control reports the value it had then; it may have been set since, so it is
        // read again. For the others the event counts: reading returns the kernel's cached value, although the camera
        // has just reported another.
        if (hasMaster(control->ability.info.identifier) && control->readable)
            read(node, *control);
        else
            note(*control, toProgram(*control, event.u.ctrl.value));
    }
    return any;
}

void BWVideoControls::readMoved(const BWKernelFile &node)
{
    for (Control &control : m_controls) {
        if (isMoved(control))
            read(node, control);
    }
}

BWVideoControls::Control *BWVideoControls::find(int identifier)
{
    return const_cast<Control *>(std::as_const(*this).find(identifier));
}

const BWVideoControls::Control *BWVideoControls::find(int identifier) const
{
    const auto found = std::find_if(m_controls.begin(), m_controls.end(), [identifier](const Control &control) {
        return control.ability.info.identifier == identifier;
    });
    return found == m_controls.end() ? nullptr : &*found;
}

int32_t BWVideoControls::toDevice(const Control &control, double value) const
{
    if (control.ability.id == V4L2_CID_EXPOSURE_AUTO)
        return BWExposureMenu(control.ability.menu).toDevice(value);
    const BWControlInfo &info = control.ability.info;
    const double steps = std::floor((std::clamp(value, info.min, info.max) - info.min) / info.step + 0.5);
    return static_cast<int32_t>(std::min(info.min + steps * info.step, info.max));
}

double BWVideoControls::toProgram(const Control &control, int32_t value) const
{
    if (control.ability.id == V4L2_CID_EXPOSURE_AUTO)
        return BWExposureMenu(control.ability.menu).toProgram(value);
    return value;
}

int BWVideoControls::send(const BWKernelFile &node, uint32_t id, int32_t value) const
{
    v4l2_ext_control control{};
    control.id = id;
    control.value = value;
    v4l2_ext_controls request{};
    request.which = V4L2_CTRL_WHICH_CUR_VAL;
    request.count = 1;
    request.controls = &control;
    return node.ioctl(VIDIOC_S_EXT_CTRLS, request);
}

void BWVideoControls::holdMaster(const BWKernelFile &node, int identifier)
{
    for (const HiddenMaster &master : hiddenMasters) {
        if (master.identifier != identifier || m_missingMasters.contains(master.id))
            continue;
        if (send(node, master.id, 0) == -EINVAL)
            m_missingMasters.insert(master.id);
    }
}

void BWVideoControls::readOthers(const BWKernelFile &node, int identifier, int result)
{
    // A control that is refused may have a mode that another program has switched on.
    const std::optional<int> mode = BWCameraSetting::automaticModeFor(identifier);
    if (Control *const master = mode && result == -EACCES ? find(*mode) : nullptr)
        read(node, *master);
    // A mode that is switched off leaves its control at some value.
    for (Control &control : m_controls) {
        if (BWCameraSetting::automaticModeFor(control.ability.info.identifier) == identifier)
            read(node, control);
    }
}

bool BWVideoControls::isMoved(const Control &control) const
{
    const std::optional<int> mode = BWCameraSetting::automaticModeFor(control.ability.info.identifier);
    return mode && value(*mode) > 0;
}

std::optional<double> BWVideoControls::readValue(const BWKernelFile &node, Control &control)
{
    if (!control.readable)
        return std::nullopt;
    // A camera that fails to answer once may hang if it is asked again and again.
    const auto value = control.ability.readValue(node);
    control.readable = value.has_value();
    return value ? std::optional(toProgram(control, *value)) : std::nullopt;
}

void BWVideoControls::read(const BWKernelFile &node, Control &control)
{
    if (const auto value = readValue(node, control))
        note(control, *value);
}

void BWVideoControls::note(Control &control, double value)
{
    if (control.value == value)
        return;
    control.value = value;
    if (m_moved)
        m_moved(control.ability.info.identifier, value);
}

void BWVideoControls::complain(Control &control, double value, int error)
{
    if (std::exchange(control.complained, true))
        return;
    qCWarning(bwDriver).noquote() << m_name << "rejects" << value << "for"
                                  << BWCameraSetting::stringForSettingIdentifier(control.ability.info.identifier) << "-"
                                  << kernelErrorText(error);
}
