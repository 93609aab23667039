#pragma once

#include "trainer/lessonrun.h"

// The record of a lesson on A4: who, when, what came of it, each step with its times, what happened
// meanwhile. False with the reason when the file cannot be written.
bool writeLessonPage(const LessonResult& result, const QString& fileName, QString* why);

// A file name in `folder` that says when and what; no such file exists.
QString lessonPageName(const LessonResult& result, const QString& folder);

QString endText(LessonResult::End end); // as people read it
QString clockText(double seconds);      // "12:05"; empty below 0
