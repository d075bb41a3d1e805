// keepcut: cut a subject out of a picture from the command line.
#include <CLI/CLI.hpp>
#include <cstdio>

#include "commands.h"
#include "image_io.h"
#include "trimap_band.h"

int main(int argc, char** argv) {
    CLI::App app{"keepcut: alpha mattes and cut-outs from a picture and a trimap"};
    app.require_subcommand(1);

    MatteOptions m;
    CLI::App* matte = app.add_subcommand("matte", "compute the matte of PICTURE for TRIMAP");
    matte->add_option("PICTURE", m.picture, "picture (8- or 16-bit, grey or colour)")->required();
    matte->add_option("TRIMAP", m.trimap, "trimap: 0 cut, 255 keep, anything else unknown")
        ->required();
    matte->add_option("-o,--output", m.alphaOut, "where to write the 8-bit matte")->required();
    matte->add_option("--cutout", m.cutoutOut,
                      "also write an RGBA cut-out (straight alpha; colours estimated at full "
                      "resolution from the matte, multi-level) here");
    matte->add_option("--foreground", m.foregroundOut,
                      "also write the foreground colours (as in --cutout) here");
    CLI::Option* hires = matte->add_flag(
        "--hires", m.hires,
        "the engine's high-resolution pass (the default for whole pictures with more than "
        "300000 pixels to compute)");
    CLI::Option* coarse = matte->add_flag(
        "--coarse", m.coarse,
        "the engine's coarse pass (fastest on small pictures; the default for regions)");
    CLI::Option* fine = matte->add_flag(
        "--fine", m.fine,
        "full-resolution detail at soft edges after the high-resolution pass, or one "
        "full-resolution system when the band is small (whole pictures; the default for "
        "bands of up to 300000 pixels)");
    matte->add_flag("--full", m.full, "solve the whole picture at full resolution (slow, exact)")
        ->excludes(hires)
        ->excludes(coarse)
        ->excludes(fine);
    hires->excludes(coarse);
    fine->excludes(hires)->excludes(coarse);
    matte->add_flag("--map", m.brushMap, "TRIMAP is an engine brush map, not a trimap");
    matte->add_option("--region", m.region, "compute only this region: X,Y,W,H")
        ->delimiter(',')
        ->each([&](const std::string&) { m.hasRegion = true; });
    matte->add_option("--cell-mode", m.cellMode, "region job mode (default 1 for regions)");
    matte->add_option("--merge", m.merge, "merge a region into the map: add or subtract")
        ->check(CLI::IsMember({"add", "subtract"}));

    BatchOptions b;
    CLI::App* batch = app.add_subcommand(
        "batch",
        "compute the matte of every picture in PICTURES with its trimap from TRIMAPS; "
        "picture NAME.EXT pairs with trimap NAME.EXT, or else with the one trimap NAME.* "
        "(any extension); a picture with no trimap is a failed pair. A failed pair is "
        "reported and the rest go on; exit 1 if any failed");
    batch->add_option("PICTURES", b.pictureDir, "folder of pictures (every file but hidden ones)")
        ->required();
    batch->add_option("TRIMAPS", b.trimapDir, "folder of trimaps named like the pictures")
        ->required();
    batch
        ->add_option("-o,--output", b.outDir,
                     "folder for NAME.png (the 8-bit matte of picture NAME.*); created if need be")
        ->required();
    batch->add_flag("--cutout", b.cutout,
                    "also write NAME-cutout.png, an RGBA cut-out (colours as matte --cutout)");
    batch->add_flag("--hires", b.hires, "the engine's high-resolution pass (the default)")
        ->excludes(batch->add_flag("--coarse", b.coarse, "the engine's coarse pass"));

    BandOptions band;
    CLI::App* bandCmd = app.add_subcommand(
        "band", "turn a rough MASK (over 127 is foreground) into a trimap for matte and batch");
    bandCmd
        ->add_option("MASK", band.mask,
                     "rough mask, 8- or 16-bit grey or colour (colour by its grey level)")
        ->required();
    bandCmd
        ->add_option("--width", band.width,
                     "band width in pixels across the mask's edge: ceil(N/2) pixels inside the "
                     "mask and floor(N/2) outside it become 128 (unknown); the rest of the inside "
                     "255, of the outside 0")
        ->required()
        ->check(CLI::Range(kMinBandWidth, kMaxBandWidth));
    bandCmd->add_option("-o,--output", band.trimapOut, "where to write the 8-bit trimap")
        ->required();

    CutoutOptions c;
    CLI::App* cutout = app.add_subcommand(
        "cutout", "cut the subject inside a rectangle out of PICTURE (GrabCut, then matting)");
    cutout->add_option("PICTURE", c.picture, "picture (8- or 16-bit, grey or colour)")->required();
    cutout->add_option("--rect", c.rect, "rectangle around the subject: X,Y,W,H (sides over 10)")
        ->required();
    cutout
        ->add_option("-o,--output", c.cutoutOut,
                     "where to write the RGBA cut-out (straight alpha; colours as matte --cutout)")
        ->required();
    cutout->add_option("--matte", c.matteOut, "also write the 8-bit matte here");
    cutout->add_option("--map", c.mapOut,
                       "also write the brush map handed to the engine (1 cut, 255 keep, 126 band)");
    cutout
        ->add_option("--band", c.band,
                     "width of the band computed along the selection's edge, in pixels "
                     "(default: 3% of the shorter side, at least 8)")
        ->check(CLI::Range(1, 1024));

    SessionOptions s;
    CLI::App* session =
        app.add_subcommand("session", "replay a masking session (a JSON list of operations)");
    session->add_option("PICTURE", s.picture, "picture (8- or 16-bit, grey or colour)")->required();
    session->add_option("SCRIPT", s.script, "the session: a JSON list of operations")->required();
    session
        ->add_option("-o,--output", s.outDir,
                     "directory for map.png, matte.png, cutout.png (colours as matte --cutout)")
        ->required();
    session->add_option("--map", s.map, "brush map to start from (default: all band)");

    DemoOptions d;
    CLI::App* demo = app.add_subcommand("demo", "matte a generated sample with a known answer");
    demo->add_option("-o,--output", d.outDir, "directory for the inputs and results");
    demo->add_option("--size", d.width, "sample width (height is 3/4 of it)")
        ->check(CLI::Range(64, 8000));

    CLI11_PARSE(app, argc, argv);
    try {
        if (*matte) return runMatte(m);
        if (*batch) return runBatch(b);
        if (*bandCmd) return runBand(band);
        if (*cutout) return runCutout(c);
        if (*session) return runSession(s);
        d.height = d.width * 3 / 4;
        return runDemo(d);
    } catch (const ToolError& e) {
        std::fprintf(stderr, "keepcut: %s\n", e.what());
    } catch (const std::exception& e) {
        std::fprintf(stderr, "keepcut: unexpected failure: %s\n", e.what());
    }
    return 1;
}
