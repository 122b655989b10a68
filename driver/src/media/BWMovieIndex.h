#pragma once

#include "media/BWMovieFragments.h"

/// The movie box of the plain movie that a movie of fragments becomes: that of the fragments, with the tables of the
/// pictures filled in. Empty if the box in front of the fragments lacks what it must have.
QByteArray makeMovieIndex(const BWMovieFragments &fragments);
