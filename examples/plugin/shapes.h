// What the plug-in is about: vectors and shapes in plain C++. Nothing here knows of the runtime.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace drawing {

struct vector {
  double x = 0;
  double y = 0;
  friend vector operator+(vector a, vector b) { return {a.x + b.x, a.y + b.y}; }
  friend vector operator-(vector a, vector b) { return {a.x - b.x, a.y - b.y}; }
  friend vector operator/(vector a, double divisor) { return {a.x / divisor, a.y / divisor}; }
  friend bool operator==(const vector&, const vector&) = default;
};

class shape {
 public:
  virtual ~shape() = default;
  virtual double area() const = 0;
  virtual void scale(double x, double y) = 0;

  std::string name;
  vector position;
  std::vector<std::string> tags;

 protected:
  shape(std::string its_name, vector its_position) : name(std::move(its_name)), position(its_position) {}
  shape(shape&&) = default;
};

class circle final : public shape {
 public:
  circle(double its_radius, vector center) : shape("circle", center), radius(its_radius) {}
  double area() const override { return 3.141592653589793 * radius * radius; }
  void scale(double x, double y) override { radius *= (x + y) / 2; }

  double radius;
};

class rectangle final : public shape {
 public:
  rectangle(double its_width, double its_height, vector corner)
      : shape("rectangle", corner), width(its_width), height(its_height) {}
  double area() const override { return width * height; }
  void scale(double x, double y) override {
    width *= x;
    height *= y;
  }

  double width;
  double height;
};

}  // namespace drawing
