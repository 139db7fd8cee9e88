// gkgeom: measure and draw planar shapes with the gkgeom library from the command line.

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <thread>

#include <gk/gk.h>
#include <CLI/CLI.hpp>

#include "commands.h"
#include "shape_file.h"

namespace {

using namespace gkgeom_tool;

int measureCommand(const std::vector<std::string>& files, bool asJson, unsigned jobs) {
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const std::string& file : files) {
    const std::vector<Shape> shapes = readShapeFile(file);
    const auto measured = measureAll(shapes, jobs, isatty(STDERR_FILENO) != 0 && shapes.size() > 1);
    // The file's name, not its path, so that reports compare across machines.
    const std::string name = std::filesystem::path(file).filename().string();
    if (asJson) {
      all.push_back({{"file", name}, {"shapes", measured}});
    } else {
      std::cout << "== " << name << "\n\n";
      writeReport(std::cout, measured);
    }
  }
  if (asJson) {
    std::cout << all.dump(2) << '\n';
  }
  return 0;
}

gkVector<2> parsePoint(const std::string& text) {
  const auto comma = text.find(',');
  try {
    std::size_t used = 0;
    const double x = std::stod(text.substr(0, comma), &used);
    std::size_t usedY = 0;
    const double y = comma == std::string::npos ? 0 : std::stod(text.substr(comma + 1), &usedY);
    if (comma == std::string::npos || used != comma || usedY != text.size() - comma - 1 ||
        !std::isfinite(x) || !std::isfinite(y)) {
      throw std::invalid_argument(text);
    }
    return gkVector<2>(x, y);
  } catch (const std::exception&) {
    throw InputError("--point " + text + ": expected two finite numbers as X,Y");
  }
}

int insideCommand(const std::string& file, const std::vector<std::string>& pointTexts,
                  bool asJson) {
  std::vector<gkVector<2>> points;
  for (const std::string& t : pointTexts) {
    points.push_back(parsePoint(t));
  }
  const std::vector<Shape> shapes = readShapeFile(file);
  std::vector<nlohmann::ordered_json> answers;
  for (const Shape& shape : shapes) {
    for (const gkVector<2>& p : points) {
      answers.push_back(insideQuery(shape, p));
    }
  }
  if (asJson) {
    std::cout << nlohmann::ordered_json(answers).dump(2) << '\n';
  } else {
    writeReport(std::cout, answers);
  }
  return 0;
}

int repairCommand(const std::string& file, const std::string& mode, const std::string& output) {
  const std::vector<Shape> shapes = readShapeFile(file);
  std::vector<Shape> repaired;
  for (const Shape& shape : shapes) {
    repaired.push_back(repairShape(shape, mode == "outer-hull"));
  }
  writeFileAtomically(output, shapesText(repaired, formatOf(output, "")));
  std::cout << "wrote " << output << '\n';
  return 0;
}

int convertCommand(const std::string& input, const std::string& output, const std::string& from,
                   const std::string& to) {
  const Format target = formatOf(output, to);
  const std::vector<Shape> shapes = readShapes(input, formatOf(input, from));
  writeFileAtomically(output, shapesText(shapes, target));
  std::cout << "wrote " << output << " (" << shapes.size() << " shapes)\n";
  return 0;
}

int drawCommand(const std::string& file, const std::string& output, const DrawOptions& options) {
  const std::vector<Shape> shapes = readShapeFile(file);
  writeFileAtomically(output, drawSvg(shapes, options, file));
  std::cout << "wrote " << output << '\n';
  return 0;
}

int demoCommand(const std::string& shapesDir, const std::string& outDir) {
  namespace fs = std::filesystem;
  std::vector<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(shapesDir, error)) {
    if (entry.path().extension() == ".json") {
      files.push_back(entry.path());
    }
  }
  if (error || files.empty()) {
    throw InputError(shapesDir + ": no example shapes (*.json) found");
  }
  std::sort(files.begin(), files.end());
  fs::create_directories(outDir, error);
  if (error) {
    throw InputError(outDir + ": cannot create the folder for the pictures");
  }
  DrawOptions everything{true, true, true, false, true};
  for (const fs::path& file : files) {
    const std::vector<Shape> shapes = readShapeFile(file.string());
    std::cout << "== " << file.filename().string() << "\n\n";
    writeReport(std::cout, measureAll(shapes, 1, false));
    // A query at the centre of each shape's box, and the repaired shapes beside the picture.
    std::vector<nlohmann::ordered_json> answers;
    for (const Shape& shape : shapes) {
      const Points& ring = shape.kind == Shape::eContour ? shape.points : shape.regions[0].outer;
      const gkRect box = gkContour(ring, true, 0).encloseRect(gkXform<2>());
      answers.push_back(insideQuery(shape, (box.ul() + box.lr()) / 2.0));
    }
    std::cout << "-- inside, at the centre of the box\n\n";
    writeReport(std::cout, answers);
    std::vector<Shape> repaired;
    for (const Shape& shape : shapes) {
      repaired.push_back(repairShape(shape, false));
    }
    const fs::path repairedFile = fs::path(outDir) / (file.stem().string() + "-regularized.json");
    writeFileAtomically(repairedFile.string(), shapesText(repaired, Format::eJson));
    const fs::path picture = fs::path(outDir) / (file.stem().string() + ".svg");
    writeFileAtomically(picture.string(), drawSvg(shapes, everything, file.filename().string()));
  }
  std::cout << "pictures and regularized shapes written to " << outDir << '\n';
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{
      "gkgeom: measure and draw planar shapes (contours, regions with holes, region "
      "sets) with the gkgeom library"};
  app.require_subcommand(1);

  std::vector<std::string> measureFiles;
  bool asJson = false;
  unsigned jobs = std::max(1u, std::thread::hardware_concurrency());
  CLI::App* measure = app.add_subcommand("measure", "every measure of every shape in the files");
  measure->add_option("files", measureFiles, "JSON shape files")->required();
  measure->add_flag("--json", asJson, "machine-readable output");
  measure->add_option("--jobs", jobs, "worker threads (default: the number of cores)")
      ->check(CLI::Range(1u, 256u));

  std::string drawFile;
  std::string drawOutput;
  DrawOptions options;
  bool all = false;
  CLI::App* draw = app.add_subcommand("draw", "an SVG picture of the shapes in a file");
  draw->add_option("file", drawFile, "shape file (.json, .wkt or .gka)")->required();
  draw->add_option("-o,--output", drawOutput, "the SVG file to write")->required();
  draw->add_flag("--hull", options.hull, "add the convex hulls");
  draw->add_flag("--ellipse", options.ellipse, "add the fitted ellipses");
  draw->add_flag("--circle", options.circle, "add the enclosing circles (farthest pair)");
  draw->add_flag("--indices", options.indices, "number the vertices");
  draw->add_flag("--regularized", options.regularized, "add the regularized boundaries");
  draw->add_flag("--all", all, "all of the above");

  std::string insideFile;
  std::vector<std::string> insidePoints;
  bool insideJson = false;
  CLI::App* inside = app.add_subcommand("inside", "containment and distance of query points");
  inside->add_option("file", insideFile, "JSON shape file")->required();
  inside->add_option("-p,--point", insidePoints, "a query point X,Y (repeatable)")->required();
  inside->add_flag("--json", insideJson, "machine-readable output");

  std::string repairFile;
  std::string repairMode = "regularize";
  std::string repairOutput;
  CLI::App* repair = app.add_subcommand("repair", "replace self-intersecting boundaries");
  repair->add_option("file", repairFile, "JSON shape file")->required();
  repair->add_option("--mode", repairMode, "regularize or outer-hull")
      ->check(CLI::IsMember({"regularize", "outer-hull"}));
  repair->add_option("-o,--output", repairOutput, "the JSON file to write")->required();

  std::string convertInput;
  std::string convertOutput;
  std::string convertFrom;
  std::string convertTo;
  CLI::App* convert = app.add_subcommand("convert", "between JSON, WKT and the archive (.gka)");
  convert->add_option("input", convertInput, "the shape file to read")->required();
  convert->add_option("output", convertOutput, "the shape file to write")->required();
  convert->add_option("--from", convertFrom, "json, wkt or gka (default: by extension)");
  convert->add_option("--to", convertTo, "json, wkt or gka (default: by extension)");

  std::string shapesDir = GKGEOM_EXAMPLE_SHAPES_DIR;
  std::string outDir = "gkgeom-demo";
  CLI::App* demo = app.add_subcommand("demo", "measure and draw the bundled example shapes");
  demo->add_option("--shapes", shapesDir, "folder of example shape files");
  demo->add_option("--out", outDir, "folder for the pictures");

  CLI11_PARSE(app, argc, argv);
  try {
    if (measure->parsed()) {
      return measureCommand(measureFiles, asJson, jobs);
    }
    if (inside->parsed()) {
      return insideCommand(insideFile, insidePoints, insideJson);
    }
    if (repair->parsed()) {
      return repairCommand(repairFile, repairMode, repairOutput);
    }
    if (convert->parsed()) {
      return convertCommand(convertInput, convertOutput, convertFrom, convertTo);
    }
    if (draw->parsed()) {
      if (all) {
        options = DrawOptions{true, true, true, true, true};
      }
      return drawCommand(drawFile, drawOutput, options);
    }
    if (demo->parsed()) {
      return demoCommand(shapesDir, outDir);
    }
  } catch (const InputError& e) {
    std::cerr << "gkgeom: " << e.what() << '\n';
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "gkgeom: " << e.what() << '\n';
    return 3;
  }
  return 1;
}
