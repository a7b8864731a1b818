#pragma once

namespace frame {

// What a worker thread gets to know its tracker by, and through which trackers are deleted.
class ThreadParam
{
public:
    virtual ~ThreadParam() = default;
};

} // namespace frame
