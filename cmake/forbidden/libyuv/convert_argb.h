#error "The application is plain C++ on the headers of platform/; this belongs in a back end."
