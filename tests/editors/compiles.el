;; Warnings count, and nothing is left behind.
(defvar compiled (make-temp-file "ntl" nil ".elc"))
(setq byte-compile-error-on-warn t
      byte-compile-dest-file-function (lambda (_) compiled))
(add-hook 'kill-emacs-hook (lambda () (delete-file compiled)))
