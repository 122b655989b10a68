#pragma once

/// Tells screen readers what our own widgets are. Without it they would be nothing in particular to them, and so would
/// be every window of the type Qt::Tool.
class BWAccessibleRoles {
public:
    BWAccessibleRoles() = delete;

    /// Before the first widget is looked at; once is enough. GUI thread.
    static void install();
};
