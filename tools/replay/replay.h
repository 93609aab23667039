#pragma once

#include <QCommandLineParser>

namespace replay {

// The options of the trainer that belong to the replay.
void addOptions(QCommandLineParser* parser);

// Whether they ask for it; `run` is then the whole program. Its result is the exit status: 2 with a line on
// standard error for a file or a moment that cannot be shown.
bool isAsked(const QCommandLineParser& parser);
int run(const QCommandLineParser& parser);

} // namespace replay
