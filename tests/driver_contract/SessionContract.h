#pragma once

#include "BackendFixture.h"

#include <QObject>

/// What every backend must do: detection, start and stop, size and controls, frames, unplugging.
class SessionContract : public QObject {
    Q_OBJECT

public:
    explicit SessionContract(BackendFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void foundThoughAttachedBefore();
    void foundAndRemovedOnceForEachPlugging();
    void startAndStopInEveryOrder();
    void everyPushedFrameArrivesOnce();
    void callbacksComeOnTheirThreads();
    void operationsCompleteOnce_data();
    void operationsCompleteOnce();
    void sizeChangesWhileStreaming();
    void unknownSizeBecomesTheNearest();
    void settingsAreClampedAndTaken();
    void startFailsWhileInUse();
    void unplugWhileStreaming();
    void heldFramesStayValidAndStarveOnlyForAsLong();
    void buttonReachesTheCamera();
    void destructionCompletesWhatWasAsked();
    void bridgeChipHasNormAndRegisters();

private:
    BackendFixture &m_fixture;
};
