#pragma once

class QLabel;

/// Lets the user mark and copy the text of a label, with the keys as well, for which it takes its turn in the order of
/// Tab.
void makeBWTextCopyable(QLabel &label);
