#pragma once

/// While one lives, an application that finds no display ends with one line on standard error and exit status 1; Qt by
/// itself would abort. One at a time, around the construction of the application.
class BWNoDisplay {
public:
    BWNoDisplay();
    ~BWNoDisplay();
    BWNoDisplay(const BWNoDisplay &) = delete;
    BWNoDisplay &operator=(const BWNoDisplay &) = delete;
};
