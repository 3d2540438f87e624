#pragma once

/// Runs the application on the back ends in force until its window is closed. Returns the exit
/// status.
int runQuelvo(int argumentCount, char** arguments);
