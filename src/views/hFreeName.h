#pragma once
// Finds a free name for a new or copied object the way a project numbers a
// name that is taken: the name itself if it is free, otherwise "name.n",
// counting on from the number the name already ends in ("Layer.3" gives
// "Layer.4"). Pure function.

#include <functional>
#include <string>

std::string hFreeName(const std::string& name, const std::function<bool(const std::string&)>& isTaken);
