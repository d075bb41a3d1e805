// CFMatt: closed-form alpha matting of the unknown band of a map.
//
// Every 3x3 window of the colour image contributes a 9x9 block of affinities;
// the blocks sum into the matting Laplacian L over the pixels near the unknown
// region, and (L + Lambda) alpha = Lambda g is solved with soft constraints on
// the known pixels. Failures inside are thrown as bare ints after the object
// has released its arrays (myThrow); statuses 2 and 4 are returned.
#pragma once

#include "core/img.h"
#include "matting/owned_array.h"

// Returned: image size out of range; nothing to solve.
inline constexpr int kMattSizeOutOfRange = 2;
inline constexpr int kMattNothingToSolve = 4;
// Thrown: too many triplets or variables (the generic failure).
inline constexpr int kMattTooLarge = -1;
// Thrown codes of the solve: base of the solver results, and a failed allocation.
inline constexpr int kMattSolverCodeBase = 124;
inline constexpr int kMattAllocFailed = 130;

// Most triplets the Laplacian may hold, and most unknowns a direct solve takes.
inline constexpr long long kMaxLaplacianTriplets = 400000000LL;
inline constexpr int kMaxSystemVariables = 2000000;

class CFMatt {
  public:
    // ---- state, in the order the object has always held it ----
    OwnedArray<float> tripVal;         // one value per affinity entry W(i,j)
    OwnedArray<float> diagSum;         // D(i) = sum of W(i,j) over windows and j, per pixel
    OwnedArray<int> tripRow;           // pixel index i (row-major) of each entry
    OwnedArray<int> tripCol;           // pixel index j >= i of each entry
    OwnedArray<unsigned char> spare;   // reserved slot, released with the others
    OwnedArray<int> varIndex;          // pixel index -> variable number, -1 if none
    OwnedArray<unsigned char> lambda;  // constraint weight of each variable
    OwnedArray<unsigned char> target;  // constraint value of each variable
    bool useDirectSolver = true;
    OwnedArray<float> solution;    // alpha of each variable, 0..255 after alphaMain
    int primStatus = 0;            // status of the latest primitive call, never tested
    double epsilon = 1e-7;         // regulariser of the window covariance
    unsigned char lowCode = 0;     // at or below: known background
    unsigned char highCode = 255;  // at or above: known foreground
    float sharpenStrength = 0.0f;  // SharpenAlpha runs when this exceeds 0.2

    CFMatt() = default;
    ~CFMatt() { cleanMemAll(); }
    CFMatt(const CFMatt&) = delete;
    CFMatt& operator=(const CFMatt&) = delete;

    void cleanMemAll();
    // Releases everything, then throws code.
    [[noreturn]] void myThrow(int code);
    void setSolver(bool useDirect) { useDirectSolver = useDirect; }

    // ---- Laplacian ----
    static void winIdx(int x, int y, int width, int* idx);
    static void copy3x3(float* src, int skip, double* dst);
    static void copy3x3(float* src, int skip, float* dst);
    static void copy3x3(unsigned char* src, int skip, double* dst);
    static void copy3x3C3(unsigned char* src, int skip, double* dst);
    void ErodeMap3x3(GIMG<unsigned char>& map);
    void compMap(bool stretch, GIMG<unsigned char>& map, GIMG<unsigned char>& background,
                 GIMG<unsigned char>& foreground);
    // Triplet assembly over the window centres where map is 0: fills the
    // triplet and diagonal-sum arrays; nnz receives the triplet count.
    int compMatLap(GIMG<unsigned char>& map, GIMG<float>** planes, int& nnz);
    int compMatLap(GIMG<unsigned char>& map, unsigned char** planes, int step, int& nnz);
    int compMatLap(GIMG<unsigned char>& map, unsigned char* rgb, int step, int& nnz);

    // ---- alpha solve ----
    int CompAlpha(unsigned char** planes, int step, int width, int height,
                  GIMG<unsigned char>& alpha);
    int CompAlpha(GIMG<float>** planes, GIMG<unsigned char>& alpha);
    int CompAlpha(unsigned char** planes, int step, int width, int height, unsigned char* alpha,
                  int alphaStep);
    int CompAlphaMap(unsigned char** planes, int step, int width, int height, unsigned char* known,
                     int knownStep, unsigned char* alpha, int alphaStep);
    int alphaMain(int width, int height, int nnz, GIMG<unsigned char>& weights,
                  GIMG<unsigned char>& map, GIMG<unsigned char>& target);
    void outAlpha(float* solution, int width, int height, GIMG<unsigned char>& weights,
                  GIMG<unsigned char>& map, GIMG<unsigned char>& alpha);
    void SharpenAlpha(GIMG<unsigned char>& alpha);

    // ---- colour layers ----
    // Estimates the foreground (or, with background set, the background)
    // colour of every pixel of one tile from its three colour planes and its
    // alpha, and leaves it in the planes. Where alpha shows only that layer
    // the picture is kept exactly. 1 when solved; kMattNothingToSolve when no
    // alpha is fractional (the planes are left as they are).
    int CompFBExtract(GIMG<unsigned char>** planes, bool background, GIMG<unsigned char>* alpha);

  private:
    // Triplets already sorted by (row, column) with duplicates merged, as the
    // direct accumulation of the solve path leaves them.
    bool tripletsMerged_ = false;
    int mergedCount_ = 0;

    template <typename Gather>
    int assembleTriplets(GIMG<unsigned char>& map, const Gather& gather, int& nnz);
    template <typename Gather>
    int assembleMerged(GIMG<unsigned char>& map, const Gather& gather, int& nnz);
    // The driver's solve paths assemble straight into merged form.
    int compMatLapMerged(GIMG<unsigned char>& map, GIMG<float>** planes, int& nnz);
    int compMatLapMerged(GIMG<unsigned char>& map, unsigned char** planes, int step, int& nnz);
    int solveFromMaps(unsigned char** planes, int step, GIMG<float>** floatPlanes,
                      GIMG<unsigned char>& weights, GIMG<unsigned char>& map,
                      GIMG<unsigned char>& target);
    void sortAndMergeTriplets(int& nnz);
    void solveDirect(int n, int width, int height, OwnedArray<float>& a, OwnedArray<int>& ia,
                     OwnedArray<int>& ja);
};
