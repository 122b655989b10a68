#pragma once

class BWCamera;
class BWCameraSetting;

/// Hands the value of a control to a camera. Any thread.
///
/// Never waits, however slow the camera: values are carried out on the camera's own thread. There, of several values
/// that wait for one control only the newest is left, at the place of the first, so different controls keep their
/// order and every control ends on the value that was sent last.
class BWSettingSender {
public:
    /// Notes the value in `setting`, one of the camera's own, until the camera tells what it took. The video norm goes
    /// to cameras with a bridge chip only; others have none that could be set.
    static void send(BWCamera &camera, BWCameraSetting &setting, double value);
};
