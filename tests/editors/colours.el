;; -*- lexical-binding: t; -*-
;; Writes the colours that Emacs gives the files of $COLOUR_FILES to $COLOUR_OUTPUT, as editor_tokens does.
(require 'ntl-mode)

(defun letter-of (face)
  (pcase (if (consp face) (car face) face)
    ((or 'font-lock-comment-face 'font-lock-comment-delimiter-face) "c")
    ('font-lock-string-face "s")
    ('ntl-open-string "o")
    ('ntl-number "n")
    ('font-lock-function-name-face "f")
    ('font-lock-preprocessor-face "p")
    ('nil ".")
    (face (if (assq face ntl-keywords) "k" "?"))))

(defun write-letters-of (file output)
  (with-temp-buffer
    (let ((coding-system-for-read 'utf-8-unix)) (insert-file-contents file))
    (ntl-mode)
    (font-lock-ensure)
    (goto-char (point-min))
    (let (letters)
      (while (not (eobp))
        (push (if (memq (char-after) '(?\s ?\t ?\n))
                  (string (char-after))
                (apply #'concat (make-list (length (encode-coding-string (string (char-after)) 'utf-8-unix))
                                           (letter-of (get-text-property (point) 'face)))))
              letters)
        (forward-char))
      (with-current-buffer output
        (insert "== " file "\n" (apply #'concat (nreverse letters)) "\n")))))

(let ((output (generate-new-buffer "output")))
  (with-temp-buffer
    (insert-file-contents (getenv "COLOUR_FILES"))
    (dolist (file (split-string (buffer-string) "\n" t)) (write-letters-of file output)))
  (with-current-buffer output (write-region nil nil (getenv "COLOUR_OUTPUT"))))
