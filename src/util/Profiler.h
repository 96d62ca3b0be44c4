// Shows where a frame goes, as a tree: scopes nest as the calls of a frame do.
//
// A listener of the input, which lies above util: nothing in util includes this header but its own
// source. Stages are marked by the light util/ScopeProfiler.h. The numeric pad's "/" switches it; while it
// is off it hears of no scope.
#pragma once

#include "input/InputListener.h"
#include "util/Singleton.h"

#include <memory>
#include <vector>

namespace util
{
class Profiler final : public input::InputListener, public Singleton<Profiler>
{
public:
    // One scope, as it is reached by one way from the root. Times are real ones, in seconds.
    class Node
    {
    public:
        /// @param parent  null for the root
        Node(const char* name, Node* parent);

        /// Compares addresses, not texts. Makes the child that is not there yet.
        /// @return  null when there are too many already
        Node* GetChild(const char* name);
        /// A row for itself and for all below it.
        /// @param depth      by so many steps the rows are indented
        /// @param nameWidth  of the column, indentation included
        /// @param elapsed    what is 100 % of the total
        String GetOutput(int depth, int nameWidth, double elapsed) const;
        /// Back to 0, itself and all below it. The nodes stay.
        void Clear();

        const char* GetName() const { return m_name; }
        Node* GetParent() const { return m_parent; }
        size_t GetChildCount() const { return m_children.size(); }
        double GetTotalTime() const { return m_totalTime; }
        double GetLargestTime() const { return m_largestTime; }
        unsigned GetCalls() const { return m_calls; }

    private:
        friend class Profiler;

        /// @param frame  its number, by which the times of one frame are put together
        void Add(double time, unsigned frame);
        int CalcNameWidth(int depth) const;
        void AppendRows(String& text, int depth, int nameWidth, double elapsed,
                        unsigned frames) const;

        const char* m_name;
        Node* m_parent;
        std::vector<std::unique_ptr<Node>> m_children; // in the order of their first entry
        double m_totalTime = 0;
        double m_largestTime = 0; // in one frame
        double m_frameTime = 0;   // in the frame of the last call
        unsigned m_frame = 0;     // its number
        unsigned m_calls = 0;
        unsigned m_entryTime = 0; // milliseconds
    };

    Profiler();
    ~Profiler() override;

    /// What a scope calls. Both do nothing while the profiler is not active or an error stands.
    void Begin(const char* name);
    void End();
    /// At the end of each frame, outside of every scope.
    void Update();

    /// Starts anew, outside of every scope: drops all nodes, and an error too.
    void Reset();
    /// All counters back to 0. The nodes stay.
    void Clear();
    /// Takes effect in the next Update, so that no scope is heard of by half.
    void SetActive(bool active) { m_wantsActive = active; }
    bool IsActive() const { return m_active; }

    /// Makes the text of what was counted, and clears it.
    /// @param elapsed  seconds
    void UpdateOutput(double elapsed);
    /// What there is to show, in Latin-1.
    const String& GetOutput() const;
    const Node& GetRoot() const { return *m_root; }

    void OnKeyEvent(const input::KeyEvent& event) override;

private:
    void Switch();
    void DropNodes();
    void Listen(bool listen);
    void Fail(const String& message);

    std::unique_ptr<Node> m_root;
    Node* m_current;             // where the next scope goes
    unsigned m_frameCount = 0;   // since the last output
    unsigned m_frame = 1;        // number of this frame
    unsigned m_frameStart = 0;   // milliseconds
    unsigned m_lastOutput = 0;   // milliseconds
    double m_outputInterval = 1; // seconds
    bool m_active = false;
    bool m_wantsActive = false; // from the next Update on
    bool m_forceOutput = false;
    String m_output; // empty before the first interval
    String m_error;  // empty: none
};
}
