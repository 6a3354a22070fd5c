// Saves an image as PDF in a program that never connected to a window server.
#include "controller/AppDelegate.h"

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    paperline::AppDelegate controller;
    controller.saveAsPDFWithName(paperline::Image(), argv[1]);
    return 0;
}
