// Plain value types of the SDK-style scene interface: vectors, colours, matrices, time.
//
// These carry the names that the engine's import code expects (KFbxVector4, KTime, ...);
// they are small value records, not bound to any file.
#pragma once

#include <cstdint>
#include <string>

typedef std::int64_t kLongLong;
typedef std::uint64_t kULongLong;

// A double triple as properties hand it out (colours, translations).
struct fbxDouble3 {
    double mData[3] = {0.0, 0.0, 0.0};
    fbxDouble3() = default;
    fbxDouble3(double x, double y, double z) : mData{x, y, z} {}
    double& operator[](int i) { return mData[(i >= 0 && i < 3) ? i : 2]; }
    double operator[](int i) const { return (i >= 0 && i < 3) ? mData[i] : 0.0; }
};

struct fbxDouble4 {
    double mData[4] = {0.0, 0.0, 0.0, 0.0};
    double operator[](int i) const { return (i >= 0 && i < 4) ? mData[i] : 0.0; }
};

class KFbxVector4 {
public:
    double mData[4] = {0.0, 0.0, 0.0, 0.0};
    KFbxVector4() = default;
    KFbxVector4(double x, double y, double z, double w = 1.0) : mData{x, y, z, w} {}
    double operator[](int i) const { return (i >= 0 && i < 4) ? mData[i] : 0.0; }
    double& operator[](int i) { return mData[(i >= 0 && i < 4) ? i : 3]; }
    bool operator==(const KFbxVector4& o) const {
        return mData[0] == o.mData[0] && mData[1] == o.mData[1] && mData[2] == o.mData[2] &&
               mData[3] == o.mData[3];
    }
};

class KFbxVector2 {
public:
    double mData[2] = {0.0, 0.0};
    KFbxVector2() = default;
    KFbxVector2(double u, double v) : mData{u, v} {}
    double operator[](int i) const { return (i >= 0 && i < 2) ? mData[i] : 0.0; }
    double& operator[](int i) { return mData[(i >= 0 && i < 2) ? i : 1]; }
};

class KFbxColor {
public:
    double mRed = 0.0;
    double mGreen = 0.0;
    double mBlue = 0.0;
    double mAlpha = 1.0;
    KFbxColor() = default;
    KFbxColor(double r, double g, double b, double a = 1.0)
        : mRed(r), mGreen(g), mBlue(b), mAlpha(a) {}
};

// A 4x4 matrix stored row by row as the file writes it (the last row holds translation).
class KFbxXMatrix {
public:
    KFbxXMatrix() { SetIdentity(); }
    void SetIdentity() {
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
                m[r][c] = r == c ? 1.0 : 0.0;
    }
    double Get(int row, int column) const {
        return (row >= 0 && row < 4 && column >= 0 && column < 4) ? m[row][column] : 0.0;
    }
    void Set(int row, int column, double value) {
        if (row >= 0 && row < 4 && column >= 0 && column < 4)
            m[row][column] = value;
    }
    KFbxVector4 GetRow(int row) const {
        return KFbxVector4(Get(row, 0), Get(row, 1), Get(row, 2), Get(row, 3));
    }
    KFbxVector4 GetT() const { return KFbxVector4(m[3][0], m[3][1], m[3][2], 1.0); }
    double m[4][4];
};

// A point in time in the file's ticks (46186158000 per second).
class KTime {
public:
    static constexpr kLongLong kTicksPerSecond = 46186158000LL;
    KTime() = default;
    explicit KTime(kLongLong ticks) : m_Ticks(ticks) {}
    kLongLong Get() const { return m_Ticks; }
    void Set(kLongLong ticks) { m_Ticks = ticks; }
    double GetSecondDouble() const { return static_cast<double>(m_Ticks) / kTicksPerSecond; }
    bool operator==(const KTime& o) const { return m_Ticks == o.m_Ticks; }

private:
    kLongLong m_Ticks = 0;
};

// A stretch of time from a start to a stop (both in ticks), such as the span a take plays.
class KTimeSpan {
public:
    KTimeSpan() = default;
    KTimeSpan(KTime start, KTime stop) : m_Start(start), m_Stop(stop) {}
    KTime GetStart() const { return m_Start; }
    KTime GetStop() const { return m_Stop; }
    void Set(KTime start, KTime stop) {
        m_Start = start;
        m_Stop = stop;
    }
    // Stop minus start, in seconds.
    double GetDurationSeconds() const {
        return m_Stop.GetSecondDouble() - m_Start.GetSecondDouble();
    }

private:
    KTime m_Start;
    KTime m_Stop;
};

// The SDK's string type; here a thin std::string.
class KString : public std::string {
public:
    using std::string::string;
    KString() = default;
    KString(const std::string& s) : std::string(s) {}
    const char* Buffer() const { return c_str(); }
    bool IsEmpty() const { return empty(); }
};
