#pragma once
// The records of the render contract: what a requester asks an element for
// (iRenderRequest), and what comes back besides the picture (iRenderResult,
// iImageSizeResult). They live on the caller's stack for one call and are
// never stored. A record belongs to the thread that renders with it; the
// element reference inside a result may be set from any thread.

#include "foundation/EStringTable.h"
#include "foundation/qvrGeometry.h"
#include "model/iBase.h"

#include <string>
#include <vector>

class iElement;

// A picture size in pixels; read and written as one value.
struct EImageSize {
    long Width = 0;
    long Height = 0;

    bool IsEmpty() const { return Width <= 0 || Height <= 0; }
    CSize ToSize() const { return {Width, Height}; }
    friend bool operator==(const EImageSize&, const EImageSize&) = default;
};

// Result codes of a render or size query.
enum iRenderCode : long {
    render_ok = 0,
    render_failed = 1, // the element can't deliver
    render_out_of_memory = -1,
    render_aborted = -2,  // also: picture not accessible
    render_bad_size = -3, // bad size of footage
    render_not_configured = -5,
};

// Texts of render failures in the string table.
enum iRenderText : EStringId {
    text_invalid_size = 49000,
    text_out_of_memory = 49001,
    text_aborted = 49002,
    text_no_source_files = 49003,
    text_unable_to_load = 49004,      // "%1" file, "%2" reason
    text_no_file_information = 49005, // "%1" file, "%2" reason
    text_no_object_selected = 49006,
    text_no_primary_parent = 49007,
    text_no_source_object = 49008,
    text_not_configured = 49009, // "%1" name, "%2" type
    text_virtual_memory_low = 49010,
    text_saver_without_parent = 65006,
};

// What is asked of an element. A view or a saver thread derives its own class
// to answer IsAborted. A copy, which a modifier passes upward with changed
// fields, asks the request it was copied from, so the original must outlive
// its copies (it does: both live on the stack of one render).
class iRenderRequest {
public:
    iRenderRequest() = default;
    iRenderRequest(const iRenderRequest& other) : iRenderRequest() { *this = other; }
    iRenderRequest& operator=(const iRenderRequest& other);
    virtual ~iRenderRequest() = default;

    virtual bool IsAborted() const { return AbortSource ? AbortSource->IsAborted() : false; }

    EImageSize ImageSize;   // the asked element's full-resolution size, from its size query
    CRect Rect;             // the part wanted, in full-resolution image coordinates
    EImageSize DisplaySize; // the pixel size in which Rect is delivered
    long Frame = 0;
    bool FullSize = false; // true: ignore DisplaySize and deliver Rect one to one

private:
    const iRenderRequest* AbortSource = nullptr;
};

// The error side of a render or size query: code, failing element and text.
struct iRenderStatus {
    long Code = render_ok;
    iReference<iElement> Element;
    std::string Message;

    void SetError(long code, iElement* element, std::string message);
    void SetError(long code, iElement* element, EStringId text);
    bool IsOk() const { return Code == render_ok; }
};

struct iRenderResult : iRenderStatus {
    CRect Rect; // the part of the source that the picture shows; empty after an error
    std::vector<std::string> Notes;

    // Records the error and empties Rect.
    void SetError(long code, iElement* element, std::string message);
    void SetError(long code, iElement* element, EStringId text);
};

struct iImageSizeResult : iRenderStatus {
    EImageSize Size;
};
