#pragma once

#include "BWACUDriver/BWV4L2Listing.h"

class QTextStream;

/// Writes what is known of video nodes, for people: no line is longer than 96 characters, if no single word is.
class BWNodePrinter {
public:
    static void print(const QList<BWV4L2Listing::Node> &nodes, QTextStream &out);
};
