// A window whose buttons report.
#include <zotracker/Loader.h>

#include <iterator>

namespace {

struct Button
{
    const wchar_t* text;
    void (*report)(ITracker& tracker);
};

constexpr Button buttons[] = {
    {L"Open a page", [](ITracker& tracker) { tracker.TrackPageview(); }},
    {L"Use a feature",
     [](ITracker& tracker) {
         tracker.TrackEvent(L"Window", L"Feature", L"Button", L"1", L"Main window");
     }},
    {L"See a message", [](ITracker& tracker) { tracker.TrackMessage(L"Your trial ends soon"); }},
    {L"Buy something",
     [](ITracker& tracker) { tracker.TrackPurchase(L"Pack", L"P1", 10, L"ORDER-7", 3); }},
};
constexpr int buttonHeight = 36, buttonWidth = 220, gap = 12;

LRESULT CALLBACK HandleMessage(HWND window, UINT message, WPARAM word, LPARAM pointer)
{
    if (message == WM_COMMAND && word < std::size(buttons))
    {
        const auto& tracker = *reinterpret_cast<const zotracker::CTracker*>(
            ::GetWindowLongPtrW(window, GWLP_USERDATA));
        buttons[word].report(*tracker);
        return 0;
    }
    if (message == WM_DESTROY)
        ::PostQuitMessage(0);
    return ::DefWindowProcW(window, message, word, pointer);
}

void MakeButtons(HWND window, HINSTANCE program)
{
    int top = gap;
    for (const Button& button : buttons)
    {
        const auto number = static_cast<std::size_t>(&button - buttons);
        ::CreateWindowW(L"BUTTON", button.text, WS_CHILD | WS_VISIBLE, gap, top, buttonWidth,
                        buttonHeight, window, reinterpret_cast<HMENU>(number), program, nullptr);
        top += buttonHeight + gap;
    }
}

HWND MakeWindow(HINSTANCE program, const zotracker::CTracker& tracker)
{
    WNDCLASSW kind = {};
    kind.lpfnWndProc = HandleMessage;
    kind.hInstance = program;
    kind.hCursor = ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
    kind.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
    kind.lpszClassName = L"ZoTrackerSample";
    ::RegisterClassW(&kind);
    RECT area = {0, 0, buttonWidth + 2 * gap,
                 static_cast<LONG>(std::size(buttons)) * (buttonHeight + gap) + gap};
    constexpr DWORD style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU;
    ::AdjustWindowRect(&area, style, FALSE);
    const HWND window = ::CreateWindowW(
        kind.lpszClassName, tracker ? L"ZoTracker" : L"Without ZoTracker.dll", style, 40, 40,
        area.right - area.left, area.bottom - area.top, nullptr, nullptr, program, nullptr);
    ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&tracker));
    MakeButtons(window, program);
    ::ShowWindow(window, SW_SHOW);
    return window;
}

} // namespace

int WINAPI WinMain(HINSTANCE program, HINSTANCE, LPSTR, int)
{
    const zotracker::CTracker tracker;
    MakeWindow(program, tracker);
    for (MSG message; ::GetMessageW(&message, nullptr, 0, 0) > 0;)
    {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
    return 0;
}
