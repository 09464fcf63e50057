// Gantt charts of a schedule: a row for each machine, time from left to right.
#pragma once

#include <string>

#include "instance.h"
#include "schedule.h"

// The character that stands for a job; after 62 jobs they repeat.
char job_mark(std::size_t job);

// For a terminal of `columns` characters. A cell shows the job that a machine works on, or a dot;
// work that is shorter than a cell may be missing.
std::string gantt_text(const Instance& instance, const Schedule& schedule, std::size_t columns,
                       bool colour);

std::string gantt_svg(const Instance& instance, const Schedule& schedule);

// A round distance between the marks of an axis of `length`, for at most `marks` of them.
int64_t axis_step(int64_t length, int64_t marks);
