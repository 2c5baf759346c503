#pragma once
// The cut buffer: elements with the links among themselves, as the text of a
// database whose one block is "CutBuffer". Cut and copy write it, paste reads
// it back. A buffer is read into a scratch project first, so that a damaged
// one never touches the project it is pasted into: an element the reader
// refuses, or a link, grid or name that leads out of the buffer, refuses the
// whole paste. Main thread only.

#include "foundation/qvrGeometry.h"

#include <memory>
#include <string>
#include <vector>

class hReportRoot;
class iElement;
class iProject;
class qvrCTreeData;

namespace CProjectCutBuffer {
constexpr const char* SectionName = "CutBuffer";

// The elements' blocks, with links and grids that lead to other elements left out.
std::string Write(const std::vector<iElement*>& elements);
// The blocks of the buffer's elements, ready for the project: each name is
// free there (numbered as the project numbers names) and each icon moved by
// `offset`. Null when the buffer is damaged; the reasons are in `report`.
std::unique_ptr<qvrCTreeData> Read(const std::string& text, iProject& project, CPoint offset,
                                   hReportRoot& report);
} // namespace CProjectCutBuffer
