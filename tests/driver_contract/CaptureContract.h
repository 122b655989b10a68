#pragma once

#include "BackendFixture.h"

#include <QObject>

/// What every backend must do: snapshots and recordings.
class CaptureContract : public QObject {
    Q_OBJECT

public:
    explicit CaptureContract(BackendFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void everyRequestTakesAFrameOfItsOwn();
    void noSnapshotWithoutAStream();
    void movieIsCompleteOnReturn();
    void recordingEndsCleanly_data();
    void recordingEndsCleanly();
    void recordingThatCannotBeWritten();
    void recordingWithoutAFrame();

private:
    BackendFixture &m_fixture;
};
