#include <gtest/gtest.h>

#include "gridline_walk.hpp"

namespace {

void expectEnds(const Walk& w, int32_t jFirst, int32_t jLast, int32_t iFirst, int32_t iLast) {
    EXPECT_EQ(w.jFirst, jFirst);
    EXPECT_EQ(w.jLast, jLast);
    EXPECT_EQ(w.iFirst, iFirst);
    EXPECT_EQ(w.iLast, iLast);
}

TEST(Gridline, SegmentWithoutLength) {
    // Shorter than 0.0001 on both axes.
    Walk w = walk(Member::first, 2.3f, 1.2f, 2.30005f, 1.20005f);
    EXPECT_EQ(w.cells, (Cells{{2, 3}}));
    expectEnds(w, 2, 2, 3, 3);
    for (Member m : {Member::v2, Member::five}) {
        w = walk(m, 2.3f, 1.2f, 2.30005f, 1.20005f, 1, 1, 10, 20);
        EXPECT_EQ(w.n, 0);
        expectEnds(w, 2, 2, 3, 3);  // filled in, offsets not added
    }
    // 0.0001 apart is a real segment: here it meets no centre line.
    w = walk(Member::first, 0.0f, 0.0f, 0.0001f, 0.0f);
    EXPECT_EQ(w.n, 0);
    expectEnds(w, 0, 0, 0, 0);
}

TEST(Gridline, NegativeCoordinatesTruncateTowardZero) {
    Walk w = walk(Member::first, -0.5f, -1.5f, -0.5f, -1.5f);
    EXPECT_EQ(w.cells, (Cells{{0, 1}}));
    w = walk(Member::first, -1.5f, -0.25f, -1.5f, -0.25f, 1.0f, 0.5f);
    EXPECT_EQ(w.cells, (Cells{{1, 0}}));
}

TEST(Gridline, CellListsOfTheThreeMembers) {
    struct Case {
        const char* what;
        float x1, y1, x2, y2;
        Cells first, v2, five;
    } cases[] = {
        {"on a row centre line, inside one cell", 0.2f, 0.5f, 0.4f, 0.5f, {}, {}, {}},
        {"inside one cell, crossing no centre line", 0.6f, 0.6f, 0.9f, 0.8f, {}, {}, {}},
        {"along a row centre line", 0.2f, 0.5f, 3.7f, 0.5f, {{1, 1}, {1, 2}, {1, 3}, {1, 4}},
         {{1, 1}, {1, 2}, {1, 3}, {1, 4}}, {{1, 1}, {1, 2}, {1, 3}, {1, 4}}},
        // Steep, starting above the first row's centre: the end fall-backs.
        {"steep, start past the first centre line", 0.45f, 0.7f, 0.95f, 2.2f, {{1, 1}},
         {{1, 1}, {2, 1}, {1, 1}}, {{1, 1}, {2, 1}}},
        // Flat mirror image of the same; gridline's spans tie (one row, one
        // column met) and a tie walks by columns, here column 2.
        {"flat, start past the first centre line", 0.7f, 0.45f, 2.2f, 0.95f, {{1, 2}},
         {{1, 1}, {1, 2}, {1, 1}}, {{1, 1}, {1, 2}}},
        // Start and end exactly on row centre lines.
        {"vertical, from centre line to centre line", 0.3f, 0.5f, 0.3f, 2.5f, {{1, 1}, {2, 1}, {3, 1}},
         {{2, 1}, {3, 1}}, {{2, 1}, {3, 1}}},
        {"the same, downward", 0.3f, 2.5f, 0.3f, 0.5f, {{3, 1}, {2, 1}, {1, 1}}, {{2, 1}, {1, 1}},
         {{2, 1}, {1, 1}}},
        {"45 degrees counts as flat", 0.2f, 0.2f, 2.7f, 2.7f, {{1, 1}, {2, 2}, {3, 3}}, {{1, 1}, {2, 2}, {3, 3}},
         {{1, 1}, {2, 2}, {3, 3}}},
        // From a cell centre to a cell centre: the start's lines are not
        // crossings, the end's are; the middle crossing lies at y = 1.0 exactly,
        // which belongs to row 2.
        {"centre to centre", 0.5f, 0.5f, 2.5f, 1.5f, {{1, 1}, {2, 2}, {2, 3}}, {{2, 2}, {2, 3}},
         {{2, 2}, {2, 3}}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(walk(Member::first, c.x1, c.y1, c.x2, c.y2).cells, c.first) << c.what;
        EXPECT_EQ(walk(Member::v2, c.x1, c.y1, c.x2, c.y2).cells, c.v2) << c.what;
        EXPECT_EQ(walk(Member::five, c.x1, c.y1, c.x2, c.y2).cells, c.five) << c.what;
    }
}

TEST(Gridline, EndIndicesAndOffsets) {
    Walk w = walk(Member::first, 0.3f, 2.5f, 0.3f, 0.5f);
    expectEnds(w, 3, 1, 1, 1);
    for (Member m : {Member::v2, Member::five}) {
        w = walk(m, 0.3f, 0.5f, 0.3f, 2.5f, 1, 1, 10, 20);
        EXPECT_EQ(w.cells, (Cells{{12, 21}, {13, 21}}));
        expectEnds(w, 12, 13, 21, 21);
        // No cell after a real walk: the end indices keep their entry values.
        w = walk(m, 0.6f, 0.6f, 0.9f, 0.8f, 1, 1, 10, 20);
        EXPECT_EQ(w.n, 0);
        expectEnds(w, 77, 77, 77, 77);
        // `single`: the start cell, no walk, no offsets.
        w = walk(m, 0.3f, 0.5f, 5.3f, 2.5f, 1, 1, 10, 20, 10000, true);
        EXPECT_EQ(w.cells, (Cells{{1, 1}}));
        expectEnds(w, 1, 3, 1, 6);
    }
    w = walk(Member::first, 0.6f, 0.6f, 0.9f, 0.8f);
    expectEnds(w, 0, 0, 0, 0);
}

TEST(Gridline, CellSizesAlongEachAxis) {
    // dx = 2, dy = 0.5: column centres at 1, 3, 5; row centres at 0.25, 0.75, ...
    Walk w = walk(Member::five, 0.5f, 0.1f, 5.5f, 0.4f, 2.0f, 0.5f);
    EXPECT_EQ(w.cells, (Cells{{1, 1}, {1, 2}, {1, 3}}));
    w = walk(Member::five, 0.5f, 0.1f, 1.5f, 1.4f, 2.0f, 0.5f);  // steep: rows 1..3
    EXPECT_EQ(w.cells, (Cells{{1, 1}, {2, 1}, {3, 1}}));
}

TEST(Gridline, ListFillsItsLimitExactly) {
    // Ten columns crossed; a limit of ten holds them without touching the
    // guard entry behind it (checked in walk()).
    for (Member m : {Member::first, Member::v2, Member::five}) {
        const Walk w = walk(m, 0.2f, 0.3f, 9.7f, 0.3f, 1, 1, 0, 0, 10);
        EXPECT_EQ(w.n, 10);
        EXPECT_EQ(w.cells.back(), (std::pair<int32_t, int32_t>{1, 10}));
    }
}

TEST(GridlineSteps, IntegerWalkBetweenCells) {
    struct C {
        int32_t i1, j1, i2, j2;
        int32_t wi1, wj1, wi2, wj2, steps;
        float stepI, stepJ;
    } cases[] = {
        {1, 1, 4, 3, 1, 1, 4, 3, 4, 1.0f, 2.0f / 3.0f},
        {4, 3, 1, 1, 4, 3, 1, 1, 4, -1.0f, -2.0f / 3.0f},
        {0, 3, 5, 1, 5, 3, 5, 1, 3, 0.0f, -1.0f},  // i1 below 1 takes i2
        {2, 0, 2, -4, 2, -4, 2, -4, 1, 0.0f, 0.0f},  // both j below 1: j1 takes j2, which keeps it
        {2, 2, 2, 2, 2, 2, 2, 2, 1, 0.0f, 0.0f},
        {3, 7, 0, 0, 3, 7, 3, 7, 1, 0.0f, 0.0f},  // i2, j2 below 1 take i1, j1
    };
    for (const auto& c : cases) {
        int32_t i1 = c.i1, j1 = c.j1, i2 = c.i2, j2 = c.j2, steps = -1;
        float si = 9, sj = 9;
        gridline_steps(i1, j1, i2, j2, steps, si, sj);
        EXPECT_EQ(i1, c.wi1);
        EXPECT_EQ(j1, c.wj1);
        EXPECT_EQ(i2, c.wi2);
        EXPECT_EQ(j2, c.wj2);
        EXPECT_EQ(steps, c.steps);
        EXPECT_EQ(si, c.stepI);
        EXPECT_EQ(sj, c.stepJ);
    }
}

TEST(GridlineIncrements, TwoRunningValues) {
    int32_t count = -1;
    float a = 9, b = 9;
    gridline_increments(1, 1, 4, 3, count, a, b, 6.0f, 9.0f);
    EXPECT_EQ(count, 4);
    EXPECT_EQ(a, 3.0f);  // spanA / 3
    EXPECT_EQ(b, 2.0f);  // spanB / 3
    gridline_increments(5, 5, 5, 5, count, a, b, 6.0f, 9.0f);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(a, 0.0f);
    EXPECT_EQ(b, 0.0f);
}

}  // namespace
